#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <numeric>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "codec/cls_huffman.h"
#include "codec/vento_codec.h"
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

TEST_F(CodecFiles, AreLeftAloneByAnError) {
    const auto source = folder.Write("source", "ab");
    const auto dest = folder.Write("dest", "precious");
    const std::string cut = dest + std::string("\0.bak", 5);
    std::filesystem::create_directory(folder / "empty");
    for (const std::string& nowhere : {folder.Path("empty"), folder.Path("no/such/folder"), cut})
        EXPECT_THROW(codec.EncodeFile(source, nowhere), std::filesystem::filesystem_error) << nowhere;
    EXPECT_TRUE(is_directory(folder / "empty"));
    for (const std::string& missing : {folder.Path("missing"), cut}) {
        EXPECT_THROW(codec.DecodeFile(missing, decoded, dest), std::filesystem::filesystem_error);
        try {
            codec.EncodeFile(missing, dest);
            FAIL();
        } catch (const RaisedError& error) {
            EXPECT_EQ(error.Number(), 2147745792U);
            EXPECT_EQ(error.Source() + error.Description(),
                      "clsHuffman.EncodeFile()Source file does not exist");
        }
    }
    EXPECT_THROW(codec.DecodeFile(folder.Write("broken", "MA1\r"), decoded, dest), RaisedError);
    EXPECT_EQ(Utf8FromWindows1252(decoded), "MA1\r");
    codec.Progress = [](std::int16_t&) { throw std::runtime_error("enough"); };
    EXPECT_THROW(codec.EncodeFile(source, dest), std::runtime_error);
    EXPECT_EQ(folder.Read("dest"), "precious");
}

/// Some codes are much longer than the others, so that pieces end anywhere in a code.
TEST_F(CodecFiles, AreTheBytesHoweverManyPiecesTheyAreReadInAndGoThereAndBackInPlace) {
    std::vector<std::uint8_t> source(std::size_t{21} << 20);
    std::mt19937 random(1);
    for (std::size_t i = 0; i < source.size(); i += 1 + random() % 8)
        source[i] = static_cast<std::uint8_t>(std::countl_zero(static_cast<std::uint32_t>(random())) * 3);
    std::vector<int> events;
    codec.Progress = [&](std::int16_t& procent) { events.push_back(procent); };
    const auto container = codec.EncodeBytes(source);
    const auto encoding = std::exchange(events, {});
    EXPECT_TRUE(codec.DecodeBytes(container).bytes == source);
    const auto decoding = std::exchange(events, {});

    const auto write = [&](const char* name, const std::vector<std::uint8_t>& bytes) {
        return folder.Write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    };
    const std::string path = write("città.bin", source);
    EXPECT_TRUE(codec.EncodeFile(path) == container);
    EXPECT_EQ(std::exchange(events, {}), encoding);
    codec.EncodeFile(path, path);
    EXPECT_EQ(std::exchange(events, {}), encoding);
    EXPECT_EQ(clsHuffman::FileInfo(path).containerSize, container.size());
    EXPECT_FALSE(codec.DecodeFile(path, decoded, path));
    EXPECT_TRUE(decoded == source);
    EXPECT_EQ(events, decoding);
    EXPECT_TRUE(codec.DecodeFile(path, decoded));
    EXPECT_TRUE(decoded == source);

    // Somebody else writes to it between the two times that it is read.
    source[0] ^= 1;
    codec.Progress = [&](std::int16_t& procent) {
        if (procent == 7) write("città.bin", source);
    };
    EXPECT_THROW(static_cast<void>(codec.EncodeFile(path)), RangeError);
    codec.Progress = [&](std::int16_t& procent) {
        if (procent == 7) write("città.bin", {});
    };
    try {
        static_cast<void>(codec.EncodeFile(path));
        FAIL();
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::io_error);
    }
}

TEST_F(CodecFiles, AreCodedWhateverTheHandlerDoes) {
    KeyArray key(20, {1, 2});
    codec.Progress = [&](std::int16_t&) {
        decoded = {};
        key = {};
        codec.Progress = nullptr;
    };
    const auto handler = codec.Progress;
    codec.EncodeFile(folder.Write("source", "abracadabra"), folder.Path("dest"));
    codec.Progress = handler;
    EXPECT_FALSE(codec.DecodeFile(folder.Path("dest"), decoded));
    EXPECT_EQ(Utf8FromWindows1252(decoded), "abracadabra");
    codec.Progress = handler;
    EXPECT_THROW(static_cast<void>(codec.EncodeString(std::string(5000, 'a') + "b", &key)), RangeError);
}

TEST(FunctionsForC, TellWhatTheClassTellsAndHowACallHasEnded) {
    const std::string source = "abracadabra";
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(source.data());
    std::vector<std::uint8_t> room(26, 7);
    std::vector<std::uint8_t> back(11);
    std::size_t size = 0;
    vento_codec_error error;
    EXPECT_EQ(vento_codec_encode(bytes, 11, room.data(), 25, &size, nullptr, &error), VENTO_CODEC_RANGE);
    EXPECT_STREQ(error.description, "The container takes 26 bytes, and there is room for 25");
    EXPECT_EQ(room, std::vector<std::uint8_t>(26, 7));
    EXPECT_EQ(vento_codec_encode(bytes, 11, room.data(), 26, &size, nullptr, nullptr), VENTO_CODEC_OK);
    EXPECT_EQ(vento_codec_decode(room.data(), 26, back.data(), 10, &size, nullptr, nullptr, &error),
              VENTO_CODEC_RANGE);
    EXPECT_STREQ(error.description, "What is decoded takes more than the 10 bytes that there is room for");
    for (const int isSource : {0, 1}) {
        int uncoded = 7;
        EXPECT_EQ(vento_codec_decode(isSource ? bytes : room.data(), isSource ? 11 : 26, back.data(), 11,
                                     &size, &uncoded, nullptr, nullptr),
                  VENTO_CODEC_OK);
        EXPECT_EQ(std::string(back.begin(), back.end()), source);
        EXPECT_EQ(uncoded, isSource);
    }
    EXPECT_EQ(vento_codec_encode_bound(300), 2415U);
    EXPECT_EQ(vento_codec_decode_bound(bytes, std::size_t{1} << 31, &size, &error), VENTO_CODEC_OVERFLOW);
    EXPECT_STREQ(error.description, "The data are 2147483648 bytes long, and 2147483647 is the most");

    std::vector<std::int64_t> key(40, 1);
    const auto stop = [](void* told, std::int16_t percent) { return *static_cast<int*>(told) = percent; };
    int told = 0;
    const vento_codec_options options = {key.data(), 20, stop, &told};
    EXPECT_EQ(vento_codec_encode(bytes, 11, room.data(), 26, &size, &options, &error), VENTO_CODEC_STOPPED);
    EXPECT_EQ(told, 7);
    EXPECT_STREQ(error.description, "the progress function has ended the call");
    const KeyArray rows(20, {1, 1});
    const auto keyed = clsHuffman().EncodeBytes({bytes, 11}, &rows);
    vento_codec_info info;
    EXPECT_EQ(vento_codec_read_info(keyed.data(), keyed.size(), &options, &info, nullptr), VENTO_CODEC_OK);
    EXPECT_EQ(std::vector<std::uint64_t>({info.form, info.source_length, info.data_offset, info.symbols,
                                          info.shortest_code, info.longest_code, info.checksum}),
              std::vector<std::uint64_t>({VENTO_CODEC_CODED, 11, 47, 5, 1, 3, 0x66}));
}

TEST_F(CodecFiles, CostNoMoreThanTheirDataCanGive) {
    const std::string claims("MA3\r\0\xFF\xFF\xFF\x7F\2\0a\1b\1\2ff", 18);  // 2147483647 bytes
    EXPECT_FALSE(codec.DecodeFile(folder.Write("claims", claims), decoded));
    EXPECT_EQ(decoded.size(), 16U);
    EXPECT_EQ(clsHuffman::DecodeBound({reinterpret_cast<const std::uint8_t*>(claims.data()), 18}), 144U);
    EXPECT_EQ(clsHuffman::DecodeBound(std::array<std::uint8_t, 7>{'M', 'A', '0', '\r'}), 3U);
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
