#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vento {

/// The languages that the system speaks. Each is an index into the texts of a Phrase and a Sentence.
enum class Language : std::uint8_t { italian, english };

inline constexpr std::size_t kLanguageCount = 2;

/// A fixed text in every language, in the order of `Language`. One that lacks a language does not compile.
class Phrase {
  public:
    template <std::convertible_to<std::string_view>... Texts>
    requires(sizeof...(Texts) == kLanguageCount) constexpr Phrase(Texts... texts)
        : texts_{std::string_view(texts)...} {}

    [[nodiscard]] std::string In(Language language) const { return std::string(View(language)); }
    /// The same where there is no memory to allocate.
    [[nodiscard]] constexpr std::string_view View(Language language) const {
        return texts_[static_cast<std::size_t>(language)];
    }

  private:
    std::array<std::string_view, kLanguageCount> texts_;
};

/// A text that is put together at run time, in every language at once, so that whoever shows it chooses.
class Sentence {
  public:
    Sentence() = default;
    Sentence(const Phrase& phrase);
    /// The same in every language: a name, a number, what a system says.
    Sentence(std::string_view text);
    Sentence(const std::string& text) : Sentence(std::string_view(text)) {}
    Sentence(const char* text) : Sentence(std::string_view(text)) {}

    [[nodiscard]] const std::string& In(Language language) const {
        return texts_[static_cast<std::size_t>(language)];
    }
    [[nodiscard]] bool Empty() const { return texts_.front().empty(); }

    /// Adds `other` in each language; nothing is put between.
    Sentence& operator+=(const Sentence& other);

  private:
    friend Sentence Fill(const Phrase& pattern, std::initializer_list<Sentence> values);

    std::array<std::string, kLanguageCount> texts_;
};

/// `pattern` with each "{0}" to "{9}" replaced by the value of that index, which there has to be, and each
/// "{0:byte|bytes}" by the first of the two words where that value is "1", by the second elsewhere.
[[nodiscard]] Sentence Fill(const Phrase& pattern, std::initializer_list<Sentence> values);

/// "name: text"
[[nodiscard]] Sentence Labelled(const Sentence& name, const Sentence& text);

/// An error whose reason whoever shows it can say in every language; `what()` is the English one.
class ReasonedError : public std::runtime_error {
  public:
    explicit ReasonedError(const Sentence& reason)
        : std::runtime_error(reason.In(Language::english)), reason_(reason) {}

    [[nodiscard]] const Sentence& Reason() const { return reason_; }

  private:
    Sentence reason_;
};

/// What is said when nothing can be allocated any more.
inline constexpr Phrase kNoMemory{"La memoria non basta", "There is not enough memory"};

/// The reason of any error: of one that is no ReasonedError what it says, in whatever language.
[[nodiscard]] Sentence ReasonOf(const std::exception& error);

}  // namespace vento
