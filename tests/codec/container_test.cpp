#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "codec/containers.h"
#include "codec/oracle.h"

namespace {

using containers::Coded;
using containers::FromHex;
using containers::FromText;
using oracle::Bytes;
using oracle::KeyArray;
using oracle::Outcome;

Bytes AllValues(int times) {
    Bytes bytes;
    for (int value = 0; value < 256; ++value)
        bytes.insert(bytes.end(), static_cast<std::size_t>(times), static_cast<std::uint8_t>(value));
    return bytes;
}

KeyArray Key(std::size_t rows, std::int64_t element) {
    return {rows, std::array{element, element}};
}

TEST(Encode, GivesTheseContainers) {
    struct Case {
        std::string source;
        std::string container;
        std::vector<int> events;
    };
    const std::vector<Case> cases = {
        {"", "4D 41 30 0D", {}},
        {"aaaa", "4D 41 30 0D 61 61 61 61", {}},
        {"ab", "4D 41 33 0D 03 02 00 00 00 02 00 61 01 62 01 02 02", {7, 12, 100}},
        {"abracadabra",
         "4D 41 33 0D 66 0B 00 00 00 05 00 61 01 62 03 63 03 64 03 72 03 BA 07 1A 73 0D",
         {7, 12, 100}}};
    for (const auto& [source, container, events] : cases) {
        const Outcome outcome = oracle::EncodeWithClass(FromText(source));
        EXPECT_EQ(outcome.bytes, FromHex(container)) << source;
        EXPECT_EQ(outcome.events, events) << source;
        EXPECT_EQ(oracle::DecodeWithClass(outcome.bytes).bytes, FromText(source));
    }
    EXPECT_EQ(oracle::EncodeWithClass(AllValues(1)).bytes.size(), 1035U);
    EXPECT_EQ(oracle::EncodeWithClass(Bytes(5000, 7)).events, std::vector({1, 3, 4, 6}));
}

TEST(Decode, TakesTheseForWhatTheyAre) {
    const auto shadowed = Coded{{{'a', "0"}, {'b', "01"}, {'c', "1"}}, "0101", 4, 0};
    const auto twice = Coded{{{'a', "0"}, {'b', "1"}, {'c', "1"}}, "01", 2, 'a' ^ 'c'};
    const auto longest =
        Coded{{{'a', "0"}, {'b', std::string(255, '1')}}, std::string(255, '1') + "0", 2, 'a' ^ 'b'};
    auto unordered = FromHex("4D41330D 03 02000000 0200 6201 6101 02 02");
    struct Case {
        const char* name;
        Bytes container;
        Bytes decoded;
        std::vector<int> events;
    };
    const std::vector<Case> cases = {
        {"foreign", FromText("MA2x and more"), FromText("MA2x and more"), {}},
        {"foreign byte 0", FromHex("48 41 33 0D"), FromHex("48 41 33 0D"), {}},
        {"stored", FromHex("4D 41 30 0D 01 02 03"), FromHex("01 02 03"), {}},
        {"stored, empty", FromHex("4D 41 30 0D"), {}, {}},
        {"source length 0", FromHex("4D 41 33 0D 55 00000000"), FromHex("4D 41 33 0D 55 00000000"), {}},
        {"pairs out of order", unordered, FromText("ab"), {89, 100}},
        {"bytes behind the last symbol",
         FromHex("4D41330D 03 02000000 0200 6101 6201 02 FE FF FF"),
         FromText("ab"),
         {89, 100}},
        {"a negative number of pairs, no data", FromHex("4D41330D 00 05000000 FFFF"), {}, {100}},
        {"a pair of length 0",
         FromHex("4D41330D 00 04000000 0300 6101 6201 7A00 02 0A"),
         FromText("abab"),
         {89, 100}},
        {"data that end early",
         FromHex("4D41330D 00 FF000000 0200 6101 6201 02 55"),
         FromText("babababa"),
         {89, 100}},
        {"a code behind another", shadowed.Make(), FromText("acac"), {89, 100}},
        {"a code given twice", twice.Make(), FromText("ac"), {89, 100}},
        {"a code of 255 bits", longest.Make(), FromText("ba"), {89, 100}}};
    for (const auto& [name, container, decoded, events] : cases) {
        const Outcome outcome = oracle::DecodeWithClass(container);
        EXPECT_EQ(outcome.error, "") << name;
        EXPECT_EQ(outcome.bytes, decoded) << name;
        EXPECT_EQ(outcome.events, events) << name;
    }
}

TEST(Decode, RefusesWhatIsBroken) {
    Coded tooManyNodes{{}, "0", 1, 0};
    for (const char* code : {"0", "10", "110"})
        tooManyNodes.codes.emplace_back(tooManyNodes.codes.size(), code + std::string(200, '1'));
    struct Case {
        const char* name;
        Bytes container;
        std::string error;
        std::vector<int> events;
    };
    const std::vector<Case> cases = {
        {"nothing", {}, "range", {}},
        {"three bytes", FromHex("4D 41 33"), "range", {}},
        {"three foreign bytes", FromText("abc"), "range", {}},
        {"another form", FromHex("4D 41 31 0D"), "HuffmanDecode()", {}},
        {"no source length", FromHex("4D 41 33 0D 00 02 00 00"), "range", {}},
        {"a negative source length", FromHex("4D41330D 03 020000F0 0200 6101 6201 02 02"), "range", {}},
        {"no table count", FromHex("4D41330D 03 02000000 02"), "range", {}},
        {"a table that runs out", FromHex("4D41330D 03 02000000 0200 6101 62"), "range", {}},
        {"a code area that runs out", FromHex("4D41330D 03 02000000 0200 6101 6209 02"), "range", {}},
        {"513 nodes", tooManyNodes.Make(), "range", {}},
        {"no codes, but data", FromHex("4D41330D 00 05000000 0000 00"), "range", {}},
        {"a wrong checksum",
         FromHex("4D41330D 02 02000000 0200 6101 6201 02 02"),
         "clsHuffman.Decode()",
         {89}},
        {"a branch that is not there", FromHex("4D41330D 00 05000000 0200 6101 6202 02 3A"), "range", {}}};
    for (const auto& [name, container, error, events] : cases) {
        const Outcome outcome = oracle::DecodeWithClass(container);
        EXPECT_EQ(outcome.error, error) << name;
        EXPECT_EQ(outcome.events, events) << name;
        EXPECT_EQ(oracle::Decode(container), outcome) << name;
    }
}

TEST(Key, LimitsWhatCanBeEncoded) {
    auto lastRow = Key(20, 0);
    lastRow[12][0] = -1;
    auto unusedRow = Key(20, 0);
    unusedRow[19][1] = 1000;
    struct Case {
        const char* name;
        Bytes source;
        KeyArray key;
        std::string error;
    };
    const std::vector<Case> cases = {{"12 rows", FromText("ab"), Key(12, 100), ""},
                                     {"11 rows", FromText("ab"), Key(11, 0), "range"},
                                     {"fewer rows than symbols", AllValues(1), Key(255, 0), "range"},
                                     {"element of 256", FromText("ab"), Key(12, 256), "overflow"},
                                     {"sum of 256", FromText("ab"), Key(12, 158), "overflow"},
                                     {"element of -1", FromText("the quick brown fox"), lastRow, "overflow"},
                                     {"bad element that is not used", FromText("ab"), unusedRow, ""},
                                     {"bad key that is not used", FromText("aa"), Key(0, 0), ""},
                                     {"16384 rows", FromText("ab"), Key(16384, 0), "overflow"}};
    for (const auto& [name, source, key, error] : cases) {
        EXPECT_EQ(oracle::EncodeWithClass(source, key).error, error) << name;
        EXPECT_EQ(oracle::EncodeWithClass(source, key), oracle::Encode(source, key)) << name;
    }
    auto values = AllValues(1);
    EXPECT_EQ(oracle::EncodeWithClass(values, Key(300, 0)).error, "range");
    values.resize(244);
    EXPECT_EQ(oracle::EncodeWithClass(values, Key(300, 0)).error, "");
}

TEST(Key, ComesBackFromTheContainerAsFarAsItIsThere) {
    KeyArray key;
    for (std::int64_t row = 0; row < 20; ++row)
        key.push_back({row, 2 * row});
    const auto source = FromText("the quick brown fox");
    const auto container = oracle::EncodeWithClass(source, key).bytes;
    auto lookedFor = key;
    std::fill_n(lookedFor.begin(), 12, std::array<std::int64_t, 2>{});
    const auto outcome = oracle::DecodeWithClass(container, lookedFor);
    EXPECT_EQ(outcome.bytes, source);
    EXPECT_EQ(outcome.key, key);
    EXPECT_NE(oracle::DecodeWithClass(container).bytes, source);

    struct Case {
        const char* name;
        std::size_t row;
        std::array<std::int64_t, 2> element;
        std::string error;
    };
    const std::vector<Case> cases = {
        {"symbol below 0", 12, {200, 24}, "range"},    {"symbol above 255", 12, {-200, 24}, "range"},
        {"length below 0", 13, {13, 200}, "overflow"}, {"length above 255", 13, {13, -250}, "overflow"},
        {"far below", 12, {INT64_MIN, 0}, "range"},    {"far above", 13, {13, INT64_MAX}, "overflow"}};
    for (const auto& [name, row, element, error] : cases) {
        auto wrong = key;
        wrong[row] = element;
        EXPECT_EQ(oracle::DecodeWithClass(container, wrong).error, error) << name;
    }
    EXPECT_EQ(oracle::DecodeWithClass(container, Key(11, 0)).error, "range");
    EXPECT_EQ(oracle::DecodeWithClass({container.begin(), container.begin() + 30}, key).key, key);
}

}  // namespace
