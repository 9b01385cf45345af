#include "text/encoding.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vento {
namespace {

// The characters of the bytes 0x80 to 0x9F. All others have the number of their byte.
constexpr std::array<char32_t, 32> kHighCharacters = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char32_t kNone = 0xFFFFFFFF;

// The first byte of a sequence says how many follow and which bits of the character it holds itself. The
// range of the byte behind it keeps out overlong forms, surrogates and what is above the last character.
struct Lead {
    std::size_t following = 0;
    unsigned mask = 0;
    unsigned low = 0x80;
    unsigned high = 0xBF;
};

Lead LeadOf(unsigned byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x1F};
    if (byte >= 0xE0 && byte <= 0xEF)
        return {2, 0x0F, byte == 0xE0 ? 0xA0U : 0x80U, byte == 0xED ? 0x9FU : 0xBFU};
    if (byte >= 0xF0 && byte <= 0xF4)
        return {3, 0x07, byte == 0xF0 ? 0x90U : 0x80U, byte == 0xF4 ? 0x8FU : 0xBFU};
    return {};
}

// Takes the first character off `text`, which is not empty. kNone if it is not UTF-8.
char32_t TakeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (first < 0x80) return first;
    Lead lead = LeadOf(first);
    if (lead.following == 0) return kNone;
    char32_t character = first & lead.mask;
    for (; lead.following > 0; --lead.following) {
        if (text.empty()) return kNone;
        const auto next = static_cast<unsigned char>(text.front());
        if (next < lead.low || next > lead.high) return kNone;
        text.remove_prefix(1);
        character = character << 6 | (next & 0x3FU);
        lead.low = 0x80;
        lead.high = 0xBF;
    }
    return character;
}

// The bytes of the characters up to the last one that has any.
constexpr auto kBytes = [] {
    std::array<std::uint8_t, std::ranges::max(kHighCharacters) + 1> bytes{};
    bytes.fill('?');
    for (std::size_t byte = 0; byte < 256; ++byte) {
        const bool high = byte >= 0x80 && byte < 0xA0;
        bytes[high ? kHighCharacters[byte - 0x80] : byte] = static_cast<std::uint8_t>(byte);
    }
    return bytes;
}();

std::uint8_t ByteOf(char32_t character) {
    return character < kBytes.size() ? kBytes[character] : std::uint8_t{'?'};
}

}  // namespace

std::vector<std::uint8_t> Windows1252FromUtf8(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size());
    while (!text.empty())
        bytes.push_back(ByteOf(TakeCharacter(text)));
    return bytes;
}

std::string Utf8FromWindows1252(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 2);
    for (const std::uint8_t byte : bytes) {
        const char32_t character = byte >= 0x80 && byte < 0xA0 ? kHighCharacters[byte - 0x80U] : byte;
        if (character < 0x80) {
            text.push_back(static_cast<char>(character));
            continue;
        }
        if (character < 0x800) {
            text.push_back(static_cast<char>(0xC0 | character >> 6));
        } else {
            text.push_back(static_cast<char>(0xE0 | character >> 12));
            text.push_back(static_cast<char>(0x80 | (character >> 6 & 0x3F)));
        }
        text.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    }
    return text;
}

std::string Utf8FromWindows1252(std::string_view bytes) {
    return Utf8FromWindows1252(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

bool SameButForCase(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, {}, AsciiLower, AsciiLower);
}

std::size_t BytesOfCharacters(std::string_view text, std::size_t count) {
    std::size_t bytes = 0;
    for (; bytes < text.size(); ++bytes) {
        const bool startsCharacter = (static_cast<std::uint8_t>(text[bytes]) & 0xC0U) != 0x80U;
        if (startsCharacter && count-- == 0) break;
    }
    return bytes;
}

std::string Shorten(std::string_view text, std::size_t count) {
    if (BytesOfCharacters(text, count) == text.size()) return std::string(text);
    return std::string(text.substr(0, BytesOfCharacters(text, count - 1))) + "…";
}

std::filesystem::path PathFromUtf8(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

std::string Utf8FromPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace vento
