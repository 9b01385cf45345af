#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "codec/containers.h"
#include "codec/oracle.h"

namespace oracle {
namespace {

KeyArray Key(std::size_t rows, std::int64_t element) {
    return {rows, std::array{element, element}};
}

TEST(Encode, GivesTheseContainers) {
    const std::vector<std::tuple<std::string, std::string, std::vector<int>>> cases = {
        {"", "4D 41 30 0D", {}},
        {"aaaa", "4D 41 30 0D 61 61 61 61", {}},
        {"ab", "4D 41 33 0D 03 02 00 00 00 02 00 61 01 62 01 02 02", {7, 12, 100}},
        {"abracadabra",
         "4D 41 33 0D 66 0B 00 00 00 05 00 61 01 62 03 63 03 64 03 72 03 BA 07 1A 73 0D",
         {7, 12, 100}}};
    for (const auto& [source, container, events] : cases) {
        const Outcome outcome = EncodeWithClass(FromText(source));
        EXPECT_EQ(outcome.bytes, FromHex(container)) << source;
        EXPECT_EQ(outcome.events, events) << source;
        EXPECT_EQ(DecodeWithClass(outcome.bytes).bytes, FromText(source));
    }
    EXPECT_EQ(EncodeWithClass(Bytes(5000, 7)).events, std::vector({1, 3, 4, 6}));
}

TEST(Decode, TakesOrRefusesTheseContainers) {
    const std::vector<std::tuple<const char*, Bytes, std::string, std::string>> cases = {
        {"foreign", FromText("MA2x and more"), "MA2x and more", ""},
        {"stored", FromText("MA0\rabc"), "abc", ""},
        {"source length 0", FromHex("4D41330D 55 00000000"), {"MA3\rU\0\0\0\0", 9}, ""},
        {"a pair of length 0", FromHex("4D41330D 00 04000000 0300 6101 6201 7A00 02 0A"), "abab", ""},
        {"data that end early", FromHex("4D41330D 00 FF000000 0200 6101 6201 02 55"), "babababa", ""},
        {"nothing", {}, "", "range"},
        {"another form", FromText("MA1\r"), "", "HuffmanDecode()"},
        {"negative length", FromHex("4D41330D 03 FFFFFFFF 0200 6101 6201 02 02"), "", "range"},
        {"a table that runs out", FromHex("4D41330D 03 02000000 0200 6101 62"), "", "range"},
        {"wrong sum", FromHex("4D41330D 02 02000000 0200 6101 6201 02 02"), "", "clsHuffman.Decode()"},
        {"no such branch", FromHex("4D41330D 00 05000000 0200 6101 6202 02 3A"), "", "range"}};
    for (const auto& [name, container, decoded, error] : cases) {
        const Outcome outcome = DecodeWithClass(container);
        EXPECT_EQ(outcome.error, error) << name;
        EXPECT_EQ(outcome.bytes, error.empty() ? FromText(decoded) : container) << name;
        EXPECT_EQ(Decode(container), outcome) << name;
    }
}

TEST(Key, LimitsWhatCanBeEncoded) {
    auto badRow = Key(20, 0);
    badRow[12][0] = -1;
    const std::vector<std::tuple<std::size_t, KeyArray, std::string>> cases = {
        {2, Key(12, 254), ""},      {2, Key(12, 255), "overflow"}, {2, Key(16384, 0), "overflow"},
        {12, badRow, ""},           {13, badRow, "overflow"},      {244, Key(300, 0), ""},
        {245, Key(300, 0), "range"}};
    for (const auto& [symbols, key, error] : cases) {
        Bytes source(symbols);
        std::iota(source.begin(), source.end(), std::uint8_t{0});
        EXPECT_EQ(EncodeWithClass(source, key).error, error) << symbols << " symbols, " << key[0][0];
        EXPECT_EQ(EncodeWithClass(source, key), Encode(source, key));
    }
}

TEST(Key, HasToBeTheOneOfTheContainer) {
    const auto container = EncodeWithClass(FromText("abcdefghijklm"), Key(20, 1)).bytes;
    const std::vector<std::tuple<std::int64_t, std::int64_t, std::string>> cases = {
        {1, 1, ""},           {200, 1, "range"},     {-300, 1, "range"},        {INT64_MIN, 1, "range"},
        {1, 200, "overflow"}, {1, -300, "overflow"}, {1, INT64_MAX, "overflow"}};
    for (const auto& [symbol, length, error] : cases) {
        auto key = Key(20, 1);
        key[12] = {symbol, length};
        EXPECT_EQ(DecodeWithClass(container, key).error, error) << symbol << ", " << length;
    }
    EXPECT_EQ(DecodeWithClass({container.begin(), container.begin() + 30}, Key(20, 0)).key, Key(20, 0));
}

}  // namespace
}  // namespace oracle
