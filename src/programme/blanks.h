#pragma once

#include <string_view>

namespace vento {

/// `text` without the blanks (U+0020, and no other white space) around it.
[[nodiscard]] constexpr std::string_view TrimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace vento
