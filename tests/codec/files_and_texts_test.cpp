#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "codec/cls_huffman.h"
#include "codec/containers.h"
#include "codec/windows_1252.h"
#include "support/scratch_folder.h"

namespace {

using containers::Bytes;
using containers::FromHex;
using containers::FromText;
using vento::codec::BytesOf;
using vento::codec::clsHuffman;
using vento::codec::RaisedError;
using vento::codec::RangeError;
using vento::codec::TextOf;

class CodecFiles : public testing::Test {
  protected:
    [[nodiscard]] std::string Holding(std::string_view name, const Bytes& bytes) const {
        return folder.Write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    [[nodiscard]] Bytes In(std::string_view name) const {
        std::ifstream file(folder / name, std::ios::binary);
        EXPECT_TRUE(file) << name;
        return {std::istreambuf_iterator<char>(file), {}};
    }

    vento::test::ScratchFolder folder;
    clsHuffman codec;
    Bytes decoded;
};

TEST_F(CodecFiles, GoThereAndBackInPlaceAndReplaceWhatIsLonger) {
    const auto path = Holding("città.bin", FromText("abracadabra"));
    codec.EncodeFile(path, path);
    EXPECT_EQ(In("città.bin").size(), 26U);
    EXPECT_FALSE(codec.DecodeFile(path, decoded));
    EXPECT_EQ(decoded, FromText("abracadabra"));
    EXPECT_EQ(In("città.bin").size(), 26U);
    EXPECT_FALSE(codec.DecodeFile(path, decoded, path));
    EXPECT_EQ(In("città.bin"), FromText("abracadabra"));
    EXPECT_TRUE(codec.DecodeFile(Holding("stored", FromText("MA0\r")), decoded, path));
    EXPECT_EQ(In("città.bin"), Bytes());
}

TEST_F(CodecFiles, AreLeftAloneByAnError) {
    const auto dest = Holding("dest", FromText("precious"));
    const auto broken = FromHex("4D41330D 02 02000000 0200 6101 6201 02 02");
    EXPECT_THROW(codec.DecodeFile(Holding("broken", broken), decoded, dest), RaisedError);
    EXPECT_EQ(decoded, broken);
    codec.Progress = [](std::int16_t&) { throw std::runtime_error("enough"); };
    EXPECT_THROW(codec.EncodeFile(Holding("source", FromText("ab")), dest), std::runtime_error);
    EXPECT_EQ(In("dest"), FromText("precious"));
}

TEST_F(CodecFiles, TellWhatIsMissing) {
    const auto missing = folder.Path("missing");
    try {
        codec.EncodeFile(missing, folder.Path("dest"));
        FAIL();
    } catch (const RaisedError& error) {
        EXPECT_EQ(error.Number(), 2147745792U);
        EXPECT_EQ(error.Source() + error.Description(), "clsHuffman.EncodeFile()Source file does not exist");
    }
    EXPECT_THROW(codec.DecodeFile(missing, decoded, folder.Path("dest")), std::filesystem::filesystem_error);
    EXPECT_THROW(codec.EncodeFile(Holding("source", FromText("ab")), folder.Path("no/such/folder")),
                 std::filesystem::filesystem_error);
    EXPECT_FALSE(std::filesystem::exists(missing) || std::filesystem::exists(folder.Path("dest")));
}

TEST_F(CodecFiles, CostNoMoreThanTheirDataCanGive) {
    const containers::Coded claims{{{'a', "0"}, {'b', "1"}}, "0110011001100110", 0x7FFFFFFF, 0};
    EXPECT_FALSE(codec.DecodeFile(Holding("claims", claims.Make()), decoded));
    EXPECT_EQ(decoded.size(), 16U);
    EXPECT_LE(decoded.capacity(), 64U);
}

TEST(Texts, AreCodedCharacterByCharacterAndLoseWhatIsNone) {
    Bytes all(256);
    for (std::size_t byte = 0; byte < all.size(); ++byte)
        all[byte] = static_cast<std::uint8_t>(byte);
    EXPECT_EQ(BytesOf(TextOf(all)), all);
    const std::vector<std::pair<std::string, Bytes>> cases = {
        {"\u20AC\u0178\u0081\u00FF", {0x80, 0x9F, 0x81, 0xFF}},
        {"\u0080\u0100\u65E5\U0001F600", FromText("????")},
        {"a\xFF\xC3", FromText("a??")},
        {"\xE2\x82z\xC0\x80", FromText("?z??")},
        {"\xED\xA0\x80", FromText("???")}};
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(BytesOf(text), bytes) << text;
    EXPECT_THROW(static_cast<void>(clsHuffman().DecodeString("")), RangeError);
}

TEST(Progress, ComparesWithWhatTheHandlerLeaves) {
    clsHuffman codec;
    std::vector<int> events;
    codec.Progress = [&](std::int16_t& procent) {
        events.push_back(procent);
        if (procent == 12) procent = 100;
    };
    static_cast<void>(codec.EncodeString("ab"));
    EXPECT_EQ(events, std::vector({7, 12}));
}

}  // namespace
