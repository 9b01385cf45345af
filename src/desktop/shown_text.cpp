#include "desktop/shown_text.h"

#include <cstddef>

namespace vento::desktop {
namespace {

constexpr unsigned char kBlank = 0x20;
constexpr unsigned char kDelete = 0x7F;
constexpr unsigned char kLeadOfC1 = 0xC2;  // U+0080 to U+009F are this byte and one below kEndOfC1
constexpr unsigned char kEndOfC1 = 0xA0;

}  // namespace

std::string ShownText(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool twoByteControl =
            byte == kLeadOfC1 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < kEndOfC1;
        if (twoByteControl) {
            ++i;
        } else if ((byte >= kBlank && byte != kDelete) || byte == '\n') {
            shown += text[i];
        }
    }
    while (!shown.empty() && shown.back() == '\n')
        shown.pop_back();
    return shown;
}

}  // namespace vento::desktop
