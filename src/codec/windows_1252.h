#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vento::codec {

/// One byte for each character of a UTF-8 text: that of Windows-1252, where the values 0x81, 0x8D, 0x8F, 0x90
/// and 0x9D, which have no character there, are the control characters of that number. What is no such
/// character, and what is not UTF-8, becomes "?"; of a broken sequence its longest beginning that could have
/// become one counts as one character.
[[nodiscard]] std::vector<std::uint8_t> BytesOf(std::string_view text);

/// The characters of `bytes` as UTF-8. All 256 values have one, and BytesOf gives them back.
[[nodiscard]] std::string TextOf(std::span<const std::uint8_t> bytes);

}  // namespace vento::codec
