#include "protocol/commands.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "protocol/code_lists.h"

namespace vento {
namespace {

TEST(Commands, TheActivationByteNamesTheFirstSectionInUse) {
    for (const auto& [state, expected] : std::vector<std::pair<int, int>>{
             {0x00, 0x00}, {0xE0, 0xE0}, {0x1F, 0x11}, {0xB0, 0xB2}, {0x70, 1}, {0xFF, 1}}) {
        EXPECT_EQ(ActivationByte(static_cast<std::uint8_t>(state)), expected) << state;
    }
}

TEST(CodeLists, PiecesAreNumbersFrom0To255) {
    EXPECT_EQ(ParseCodeList(" 7 , 0000000042,0,255").bytes, (std::vector<std::uint8_t>{7, 42, 0, 255}));
    for (const std::string bad : {"", "1 2", "256", "4,-1", "1,2x", "1,,2", "1,255,"}) {
        const ParsedCodeList list = ParseCodeList(bad);
        EXPECT_EQ(list.bad ? list.bad->place : 0, list.bytes.size() + 1) << bad;
    }
}

}  // namespace
}  // namespace vento
