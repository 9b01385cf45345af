#include "console/text_layout.h"

#include <algorithm>
#include <cstdint>

#include "text/encoding.h"

namespace vento::console {
namespace {

bool StartsCharacter(char byte) {
    return (static_cast<std::uint8_t>(byte) & 0xC0U) != 0x80U;
}

// Control characters are one byte below 32 or 127, or the bytes C2 80 to C2 9F.
std::size_t ControlLength(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (first < 0x20 || first == 0x7F) return 1;
    if (first != 0xC2 || text.size() < 2) return 0;
    const auto second = static_cast<std::uint8_t>(text[1]);
    return second >= 0x80 && second < 0xA0 ? 2 : 0;
}

void WrapLine(std::string_view text, std::size_t width, std::vector<std::string>& lines) {
    std::string line;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (!line.empty() && Width(line) + 1 + Width(word) > width) {
            lines.push_back(std::move(line));
            line.clear();
        }
        if (!line.empty()) line += ' ';
        line += word;
        while (Width(line) > width) {
            const std::size_t cut = BytesOfCharacters(line, width);
            lines.push_back(line.substr(0, cut));
            line.erase(0, cut);
        }
    }
    lines.push_back(std::move(line));
}

}  // namespace

std::size_t Width(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, StartsCharacter));
}

std::string Pad(std::string_view text, std::size_t width) {
    std::string padded(text);
    const std::size_t own = Width(text);
    if (own < width) padded.append(width - own, ' ');
    return padded;
}

std::string Printable(std::string_view text) {
    std::string printable;
    printable.reserve(text.size());
    while (!text.empty()) {
        const std::size_t control = ControlLength(text);
        if (control == 0) printable.push_back(text[0]);
        text.remove_prefix(std::max<std::size_t>(control, 1));
    }
    return printable;
}

std::vector<std::string> Wrap(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    for (;;) {
        const auto end = text.find('\n');
        WrapLine(Printable(text.substr(0, end)), width, lines);
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

}  // namespace vento::console
