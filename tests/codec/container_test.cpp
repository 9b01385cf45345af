#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>
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

Bytes DifferentValues(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t value = 0; value < count; ++value)
        bytes[value] = static_cast<std::uint8_t>(value);
    return bytes;
}

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
        const Outcome outcome = oracle::EncodeWithClass(FromText(source));
        EXPECT_EQ(outcome.bytes, FromHex(container)) << source;
        EXPECT_EQ(outcome.events, events) << source;
        EXPECT_EQ(oracle::DecodeWithClass(outcome.bytes).bytes, FromText(source));
    }
    EXPECT_EQ(oracle::EncodeWithClass(DifferentValues(256)).bytes.size(), 1035U);
    EXPECT_EQ(oracle::EncodeWithClass(Bytes(5000, 7)).events, std::vector({1, 3, 4, 6}));
}

TEST(Decode, TakesOrRefusesTheseContainers) {
    const std::string ones(255, '1');
    // 1 node, 1 more, 255 more, 254 more and so many that are in none of the codes above
    const auto nodes = [&](const std::string& last) {
        const std::string other = "10" + std::string(253, '0');
        return Coded{{{'a', "0"}, {'b', ones}, {'c', other}, {'d', last}}, "0", 1, 'a'}.Make();
    };
    const Coded shadowed{{{'a', "0"}, {'b', "01"}, {'c', "1"}}, "0101", 4, 0};
    const Coded twice{{{'a', "0"}, {'b', "1"}, {'c', "1"}}, "01", 2, 'a' ^ 'c'};
    const Coded longest{{{'a', "0"}, {'b', ones}}, ones + "0", 2, 'a' ^ 'b'};
    struct Case {
        const char* name;
        Bytes container;
        std::string decoded;
        std::string error{};
    };
    const std::vector<Case> cases = {
        {"foreign", FromText("MA2x and more"), "MA2x and more"},
        {"foreign byte 0", FromText("HA3\r"), "HA3\r"},
        {"stored", FromText("MA0\rabc"), "abc"},
        {"stored, empty", FromText("MA0\r"), ""},
        {"source length 0", FromHex("4D41330D 55 00000000"), {"MA3\rU\0\0\0\0", 9}},
        {"pairs out of order", FromHex("4D41330D 03 02000000 0200 6201 6101 02 02"), "ab"},
        {"bytes at the end", FromHex("4D41330D 03 02000000 0200 6101 6201 02 FE FFFF"), "ab"},
        {"negative number of pairs, no data", FromHex("4D41330D 00 05000000 FFFF"), ""},
        {"a pair of length 0", FromHex("4D41330D 00 04000000 0300 6101 6201 7A00 02 0A"), "abab"},
        {"data that end early", FromHex("4D41330D 00 FF000000 0200 6101 6201 02 55"), "babababa"},
        {"a code behind another", shadowed.Make(), "acac"},
        {"a code given twice", twice.Make(), "ac"},
        {"a code of 255 bits", longest.Make(), "ba"},
        {"nothing", {}, "", "range"},
        {"three bytes", FromText("MA3"), "", "range"},
        {"another form", FromText("MA1\r"), "", "HuffmanDecode()"},
        {"no source length", FromHex("4D41330D 00 020000"), "", "range"},
        {"negative length", FromHex("4D41330D 03 FFFFFFFF 0200 6101 6201 02 02"), "", "range"},
        {"no table count", FromHex("4D41330D 03 02000000 02"), "", "range"},
        {"a table that runs out", FromHex("4D41330D 03 02000000 0200 6101 62"), "", "range"},
        {"codes that run out", FromHex("4D41330D 03 02000000 0200 6101 6209 02"), "", "range"},
        {"512 nodes", nodes("110"), "a"},
        {"513 nodes", nodes("1100"), "", "range"},
        {"no codes, but data", FromHex("4D41330D 00 05000000 0000 00"), "", "range"},
        {"wrong sum", FromHex("4D41330D 02 02000000 0200 6101 6201 02 02"), "", "clsHuffman.Decode()"},
        {"no such branch", FromHex("4D41330D 00 05000000 0200 6101 6202 02 3A"), "", "range"}};
    for (const auto& [name, container, decoded, error] : cases) {
        const Outcome outcome = oracle::DecodeWithClass(container);
        EXPECT_EQ(outcome.error, error) << name;
        EXPECT_EQ(outcome.bytes, error.empty() ? FromText(decoded) : container) << name;
        EXPECT_EQ(oracle::Decode(container), outcome) << name;
    }
}

TEST(Key, LimitsWhatCanBeEncoded) {
    auto usedRow = Key(20, 0);
    usedRow[12][0] = -1;
    auto unusedRow = Key(20, 0);
    unusedRow[19][1] = 1000;
    const std::vector<std::tuple<const char*, Bytes, KeyArray, std::string>> cases = {
        {"12 rows, sum of 255", FromText("ab"), Key(12, 157), ""},
        {"11 rows", FromText("ab"), Key(11, 0), "range"},
        {"fewer rows than symbols", DifferentValues(200), Key(199, 0), "range"},
        {"element of 256", FromText("ab"), Key(12, 256), "overflow"},
        {"sum of 256", FromText("ab"), Key(12, 158), "overflow"},
        {"element of -1", FromText("the quick brown fox"), usedRow, "overflow"},
        {"bad element that is not used", FromText("ab"), unusedRow, ""},
        {"bad key that is not used", FromText("aa"), Key(0, 0), ""},
        {"16384 rows", FromText("ab"), Key(16384, 0), "overflow"},
        {"244 symbols", DifferentValues(244), Key(300, 0), ""},
        {"245 symbols", DifferentValues(245), Key(300, 0), "range"}};
    for (const auto& [name, source, key, error] : cases) {
        EXPECT_EQ(oracle::EncodeWithClass(source, key).error, error) << name;
        EXPECT_EQ(oracle::EncodeWithClass(source, key), oracle::Encode(source, key)) << name;
    }
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

    using Row = std::array<std::int64_t, 2>;
    const std::vector<std::tuple<const char*, std::size_t, Row, std::string>> cases = {
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
