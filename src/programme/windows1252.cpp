#include "programme/windows1252.h"

#include <array>
#include <cstdint>

namespace vento {
namespace {

// The characters of the bytes 0x80 to 0x9F; all others stand for themselves, as in Latin-1.
constexpr std::array<char16_t, 32> kUpperControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

std::string Utf8FromWindows1252(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        std::uint32_t character = static_cast<std::uint8_t>(byte);
        if (character < 0x80) {
            text.push_back(byte);
            continue;
        }
        if (character < 0xA0) character = kUpperControls[character - 0x80];
        if (character < 0x800) {
            text.push_back(static_cast<char>(0xC0 | (character >> 6)));
        } else {
            text.push_back(static_cast<char>(0xE0 | (character >> 12)));
            text.push_back(static_cast<char>(0x80 | ((character >> 6) & 0x3F)));
        }
        text.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    }
    return text;
}

}  // namespace vento
