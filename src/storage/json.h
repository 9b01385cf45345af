#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/language.h"

namespace vento::storage {

/// The content of a file that can't be used. It says at which place, what was expected there and what
/// was found.
class ContentError : public ReasonedError {
  public:
    using ReasonedError::ReasonedError;
};

/// Reads strict JSON: no comments, no key twice in an object, nothing behind the end, nesting of 16 at the
/// most. Throws ContentError with the place.
[[nodiscard]] nlohmann::json ParseJson(std::string_view text);

/// A place in a JSON document, and the value there, if any. Whatever does not find what it expects throws
/// ContentError with the path of the place, what was expected, and what was found. Must not outlive the
/// document.
class JsonNode {
  public:
    explicit JsonNode(const nlohmann::json& document) : value_(&document) {}

    [[noreturn]] void Refuse(const Sentence& expected) const;

    [[nodiscard]] bool IsThere() const { return value_ != nullptr; }
    [[nodiscard]] bool IsNull() const;
    [[nodiscard]] bool IsList() const;
    [[nodiscard]] bool IsObject() const;

    [[nodiscard]] std::vector<std::string> Keys() const;
    /// No other keys than these are allowed.
    void AllowKeys(std::span<const std::string_view> keys) const;
    /// The place of this key, whether it is there or not.
    [[nodiscard]] JsonNode At(std::string_view key) const;

    /// The number of items of a list of `most` at the most. `items` names them in the plural.
    [[nodiscard]] std::size_t Count(std::size_t most, const Phrase& items) const;
    [[nodiscard]] JsonNode Item(std::size_t index) const;

    [[nodiscard]] bool Boolean() const;
    [[nodiscard]] const std::string& Text() const;
    /// The index of the text among `choices`.
    [[nodiscard]] std::size_t Choice(std::span<const std::string_view> choices) const;
    /// A whole number from `least` to `most`.
    [[nodiscard]] std::uint64_t Number(std::uint64_t least, std::uint64_t most) const;
    [[nodiscard]] std::uint8_t Byte() const { return static_cast<std::uint8_t>(Number(0, 255)); }

  private:
    JsonNode(const nlohmann::json* value, std::string path) : value_(value), path_(std::move(path)) {}

    const nlohmann::json* value_;
    std::string path_;
};

}  // namespace vento::storage
