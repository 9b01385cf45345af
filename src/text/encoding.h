#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The texts of the system are UTF-8. This is what they come from and go to.
namespace vento {

/// The characters of `bytes` as UTF-8. All 256 values have one: the five that Windows-1252 leaves unassigned
/// (0x81, 0x8D, 0x8F, 0x90 and 0x9D) are the control characters of the same number, as in the best-fit table
/// that Unicode publishes for the code page (bestfit1252.txt).
[[nodiscard]] std::string Utf8FromWindows1252(std::span<const std::uint8_t> bytes);
[[nodiscard]] std::string Utf8FromWindows1252(std::string_view bytes);

/// The reverse, one byte for each character. A character outside Windows-1252, and what is not UTF-8, becomes
/// "?"; of a broken sequence its longest beginning that could have become a character counts as one.
[[nodiscard]] std::vector<std::uint8_t> Windows1252FromUtf8(std::string_view text);

/// Letters of ASCII in lower case, everything else as it is, whatever the locale.
[[nodiscard]] constexpr char AsciiLower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Whether two texts are the same but for the case of letters of ASCII.
[[nodiscard]] bool SameButForCase(std::string_view one, std::string_view other);

/// The number of bytes that the first `count` characters of a UTF-8 text take.
[[nodiscard]] std::size_t BytesOfCharacters(std::string_view text, std::size_t count);

/// `text`, or if it has more than `count` characters (at least 1) its beginning and an ellipsis.
[[nodiscard]] std::string Shorten(std::string_view text, std::size_t count);

/// Characters of what somebody has written that a message shows, where they can be any number.
inline constexpr std::size_t kQuotedCharacters = 40;

/// The path that a UTF-8 text names, on every system, and back.
[[nodiscard]] std::filesystem::path PathFromUtf8(std::string_view text);
[[nodiscard]] std::string Utf8FromPath(const std::filesystem::path& path);

}  // namespace vento
