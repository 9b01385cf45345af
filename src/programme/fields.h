#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The pieces of a programme file as texts and numbers.
namespace vento {

/// `text` without the blanks (U+0020, and no other white space) around it.
[[nodiscard]] constexpr std::string_view TrimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// The value of a run of decimal digits with blanks around it, leading zeros included; nothing if `text` is
/// anything else or the value is above `maximum`, which is at most 65535.
[[nodiscard]] constexpr std::optional<std::uint16_t> ParseDecimal(std::string_view text,
                                                                  std::uint16_t maximum) {
    const std::string_view digits = TrimBlanks(text);
    if (digits.empty()) return std::nullopt;
    std::uint32_t value = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') return std::nullopt;
        value = value * 10 + static_cast<std::uint32_t>(digit - '0');
        if (value > maximum) return std::nullopt;
    }
    return static_cast<std::uint16_t>(value);
}

}  // namespace vento
