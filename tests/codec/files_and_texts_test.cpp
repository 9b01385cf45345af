#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>
#include <string>
#include <vector>

#include "codec/cls_huffman.h"
#include "support/scratch_folder.h"
#include "text/encoding.h"

namespace vento::codec {
namespace {

class CodecFiles : public testing::Test {
  protected:
    test::ScratchFolder folder;
    clsHuffman codec;
    std::vector<std::uint8_t> decoded;
};

TEST_F(CodecFiles, GoThereAndBackInPlaceAndReplaceWhatIsLonger) {
    const auto path = folder.Write("città.bin", "abracadabra");
    codec.EncodeFile(path, path);
    EXPECT_FALSE(codec.DecodeFile(path, decoded));
    EXPECT_EQ(Utf8FromWindows1252(decoded), "abracadabra");
    EXPECT_EQ(folder.Read("città.bin").size(), 26U);
    EXPECT_FALSE(codec.DecodeFile(path, decoded, path));
    EXPECT_EQ(folder.Read("città.bin"), "abracadabra");
    EXPECT_TRUE(codec.DecodeFile(folder.Write("stored", "MA0\r"), decoded, path));
    EXPECT_EQ(folder.Read("città.bin"), "");
}

TEST_F(CodecFiles, AreLeftAloneByAnError) {
    const auto dest = folder.Write("dest", "precious");
    EXPECT_THROW(codec.DecodeFile(folder.Write("broken", "MA1\r"), decoded, dest), RaisedError);
    EXPECT_EQ(Utf8FromWindows1252(decoded), "MA1\r");
    const auto missing = folder.Path("missing");
    try {
        codec.EncodeFile(missing, dest);
        FAIL();
    } catch (const RaisedError& error) {
        EXPECT_EQ(error.Number(), 2147745792U);
        EXPECT_EQ(error.Source() + error.Description(), "clsHuffman.EncodeFile()Source file does not exist");
    }
    EXPECT_THROW(codec.DecodeFile(missing, decoded, dest), std::filesystem::filesystem_error);
    EXPECT_THROW(codec.EncodeFile(dest, folder.Path("no/such/folder")), std::filesystem::filesystem_error);
    codec.Progress = [](std::int16_t&) { throw std::runtime_error("enough"); };
    EXPECT_THROW(codec.EncodeFile(folder.Write("source", "ab"), dest), std::runtime_error);
    EXPECT_EQ(folder.Read("dest"), "precious");
}

TEST_F(CodecFiles, CostNoMoreThanTheirDataCanGive) {
    const std::string claims("MA3\r\0\xFF\xFF\xFF\x7F\2\0a\1b\1\2ff", 18);  // 2147483647 bytes
    EXPECT_FALSE(codec.DecodeFile(folder.Write("claims", claims), decoded));
    EXPECT_EQ(decoded.size(), 16U);
    EXPECT_LE(decoded.capacity(), 64U);
}

TEST(Texts, AreCodedCharacterByCharacterAndLoseWhatIsNone) {
    std::vector<std::uint8_t> all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    EXPECT_EQ(Windows1252FromUtf8(Utf8FromWindows1252(all)), all);
    const std::vector<std::pair<std::string, std::vector<std::uint8_t>>> cases = {
        {"\x7F€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F"
         "\u0090‘’“”•–—˜™š›œ\u009DžŸ\u00A0",
         {all.begin() + 0x7F, all.begin() + 0xA1}},
        {"\u0080\u0100\u65E5\U0001F600", {'?', '?', '?', '?'}},
        {"\xE2\x82z\xC0\x80\xED\xA0\x80\xFF\xC3", {'?', 'z', '?', '?', '?', '?', '?', '?', '?'}}};
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(Windows1252FromUtf8(text), bytes) << text;
}

}  // namespace
}  // namespace vento::codec
