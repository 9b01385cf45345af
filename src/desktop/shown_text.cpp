#include "desktop/shown_text.h"

#include <algorithm>
#include <array>

namespace vento::desktop {
namespace {

constexpr unsigned char kBlank = 0x20;
constexpr unsigned char kDelete = 0x7F;

/// Characters without a shape, as UTF-8: those from `first` to the one that differs in its last byte, `last`.
struct Unseen {
    std::string_view first;
    unsigned char last;
};

constexpr std::array kUnseen{
    Unseen{"\xC2\x80", 0x9F},      // controls
    Unseen{"\xD8\x9C", 0x9C},      // the rest turn the direction of a text, which would then read otherwise,
    Unseen{"\xE2\x80\x8E", 0x8F},  // or end its line
    Unseen{"\xE2\x80\xA8", 0xAE}, Unseen{"\xE2\x81\xA6", 0xA9},
};

/// How many bytes an unseen character at the beginning of `text` takes; 0 if it begins with one to be seen.
std::size_t UnseenBytes(std::string_view text) {
    const auto byte = static_cast<unsigned char>(text.front());
    if ((byte < kBlank && byte != '\n') || byte == kDelete) return 1;
    for (const auto& [first, last] : kUnseen) {
        const std::size_t lead = first.size() - 1;
        if (text.size() <= lead || text.substr(0, lead) != first.substr(0, lead)) continue;
        const auto end = static_cast<unsigned char>(text[lead]);
        if (end >= static_cast<unsigned char>(first.back()) && end <= last) return first.size();
    }
    return 0;
}

}  // namespace

std::string ShownText(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::size_t unseen = UnseenBytes(text);
        if (unseen == 0) shown += text.front();
        text.remove_prefix(std::max<std::size_t>(unseen, 1));
    }
    while (!shown.empty() && shown.back() == '\n')
        shown.pop_back();
    return shown;
}

}  // namespace vento::desktop
