#include "desktop/layout.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "desktop/shown_text.h"

namespace vento::desktop {
namespace {

TEST(Layout, RoundsEdgesSoThatWhatIsAlignedInTwipsIsAlignedOnEveryScreen) {
    for (const int dpi : {96, 120, 144, 168, 192, 288}) {
        const Rectangle open = PixelsFromTwips(LayoutOf(ControlId::Command4).place, dpi);
        const Rectangle list = PixelsFromTwips(LayoutOf(ControlId::ListView1_2).place, dpi);
        const Rectangle close = PixelsFromTwips(LayoutOf(ControlId::Command3).place, dpi);
        EXPECT_EQ(open.top + open.height, list.top + list.height) << dpi;
        EXPECT_EQ(close.left + close.width, list.left + list.width) << dpi;
    }
    EXPECT_EQ(PixelsFromTwips(Rectangle{10, 10, 10, 10}, 96), (Rectangle{1, 1, 0, 0}));
}

TEST(Layout, GivesEveryButtonAKeyOfItsOwnInEachLanguage) {
    for (const auto language : {Language::italian, Language::english}) {
        std::set<std::string> keys;
        for (const ControlLayout& each : ControlLayouts()) {
            const std::string key = each.mnemonic.In(language);
            if (key.empty()) continue;
            EXPECT_TRUE(keys.insert(key).second) << key;
            EXPECT_TRUE(ToolTipOf(each, language).ends_with("(Alt+" + key + ")"));
        }
        EXPECT_EQ(keys.size(), 4U);
    }
}

TEST(ShownText, HasNoControlCharactersAndNoEmptyLineAtItsEnd) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", ""},
        {"TV ALFA\r\nSAT\r\n", "TV ALFA\nSAT"},
        {"Si \u00E8\u008F verificato", "Si \u00E8 verificato"},
        {"\tA\x7F\u0080\u009F\u00A0B", "A\u00A0B"},
        {"cut\xC2", "cut\xC2"},
        {"VENTO-\u202Eblq.exe\u202C\u2069\u200F\u061C", "VENTO-blq.exe"},
        {"a\u2027\u2028b\u202F\u2065\u200Dc\xE2\x80", "a\u2027b\u202F\u2065\u200Dc\xE2\x80"},
        {"\n\n", ""},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(ShownText(text), shown) << text;
}

}  // namespace
}  // namespace vento::desktop
