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

TEST(Decode, TakesOrRefusesTheseContainers) {
    const std::vector<std::tuple<const char*, Bytes, std::string, std::string>> cases = {
        {"foreign", FromText("MA2x and more"), "MA2x and more", ""},
        {"stored", FromText("MA0\rabc"), "abc", ""},
        {"source length 0", FromHex("4D41330D 55 00000000"), {"MA3\rU\0\0\0\0", 9}, ""},
        {"a pair of length 0", FromHex("4D41330D 00 04000000 0300 6101 6201 7A00 02 0A"), "abab", ""},
        {"data that end early", FromHex("4D41330D 00 FF000000 0200 6101 6201 02 55"), "babababa", ""},
        {"nothing", {}, "", "The data are 0 bytes long, and need 4 at least"},
        {"another form", FromText("MA1\r"), "",
         "The data either was not compressed with HE3 or is corrupt (identification string not found)"},
        {"form alone", FromHex("4D41330D"), "", "The container ends at offset 4, within its checksum"},
        {"half a length", FromHex("4D41330D 03 02"), "",
         "The container ends at offset 6, within its source length"},
        {"negative length", FromHex("4D41330D 03 FFFFFFFF 0200 6101 6201 02 02"), "",
         "The source length is negative: -1"},
        {"no count", FromHex("4D41330D 03 02000000 02"), "",
         "The container ends at offset 10, within its table count"},
        {"a table that runs out", FromHex("4D41330D 03 02000000 0200 6101 62"), "",
         "The container ends at offset 14, within its symbol table"},
        {"no codes", FromHex("4D41330D 03 02000000 0200 6101 6201"), "",
         "The container ends at offset 15, within its code area"},
        {"wrong sum", FromHex("4D41330D 02 02000000 0200 6101 6201 02 02"), "",
         "The data might be corrupted (checksum did not match expected value)"},
        {"no such branch", FromHex("4D41330D 00 05000000 0200 6101 6202 02 D4"), "",
         "The data do not fit their code, at bit 7 of offset 16"}};
    for (const auto& [name, container, decoded, said] : cases) {
        const Outcome outcome = DecodeWithClass(container);
        EXPECT_EQ(outcome.said, said) << name;
        EXPECT_EQ(outcome.bytes, said.empty() ? FromText(decoded) : container) << name;
        EXPECT_EQ(Decode(container), outcome) << name;
    }
}

TEST(Key, LimitsWhatCanBeEncoded) {
    auto badRow = Key(20, 0);
    badRow[12][0] = -1;
    const std::vector<std::tuple<std::size_t, KeyArray, std::string>> cases = {
        {2, Key(12, 254), ""},
        {2, Key(12, 255), "Row 0 of the key: 255 added to 1 does not make a byte"},
        {3, Key(16382, 0), ""},
        {2, Key(16383, 0), "A key of 16383 rows is too long for the table count"},
        {2, Key(11, 0), "The key has 11 rows, and row 11 is needed"},
        {12, badRow, ""},
        {13, badRow, "Row 12 of the key: -1 added to 12 does not make a byte"},
        {244, Key(300, 0), ""},
        {245, Key(300, 0), "With a key a container holds at most 244 symbols"}};
    for (const auto& [symbols, key, said] : cases) {
        Bytes source(symbols);
        std::iota(source.begin(), source.end(), std::uint8_t{0});
        EXPECT_EQ(EncodeWithClass(source, key).said, said) << symbols << " symbols, " << key[0][0];
        EXPECT_EQ(EncodeWithClass(source, key), Encode(source, key));
    }
}

TEST(Key, HasToBeTheOneOfTheContainer) {
    const auto container = EncodeWithClass(FromText("abcdefghijklm"), Key(20, 1)).bytes;
    const auto decode = [](const Bytes& bytes, const KeyArray& key) {
        const Outcome outcome = DecodeWithClass(bytes, key);
        EXPECT_EQ(outcome, Decode(bytes, key));
        return outcome.said;
    };
    const std::string symbol = "Without its key a symbol is not a byte (pair 12 of the symbol table)";
    const std::string length = "Without its key a code length is not a byte (pair 12 of the symbol table)";
    const std::vector<std::tuple<std::int64_t, std::int64_t, std::string>> cases = {
        {1, 1, ""},       {200, 1, symbol},  {-300, 1, symbol},     {INT64_MIN, 1, symbol},
        {1, 200, length}, {1, -300, length}, {1, INT64_MAX, length}};
    for (const auto& [first, second, said] : cases) {
        auto key = Key(20, 1);
        key[12] = {first, second};
        EXPECT_EQ(decode(container, key), said) << first << ", " << second;
    }
    EXPECT_EQ(decode(container, Key(11, 1)), "The key has 11 rows, and needs 12 at least");
    EXPECT_EQ(decode(container, Key(12, 1)), "The key has no row for a symbol (pair 12 of the symbol table)");
    EXPECT_EQ(decode({container.begin(), container.begin() + 30}, Key(20, 0)),
              "The container ends at offset 30, within its key block");
}

}  // namespace
}  // namespace oracle
