#include "codec/oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "codec/containers.h"

namespace {

using containers::Coded;
using oracle::Bytes;
using oracle::KeyArray;

/// Data that put the fast ways and their limits to the test.
struct Kind {
    const char* name;
    std::function<std::uint8_t(std::mt19937&, std::size_t)> byteAt;
};

const std::vector<Kind> kinds = {
    {"one value", [](auto&, auto) { return 200; }},
    {"two values", [](auto& random, auto) { return random() % 2; }},
    {"codes of four bits, none of which synchronises", [](auto&, auto i) { return i % 16; }},
    {"codes of eight bits", [](auto&, auto i) { return i * 77; }},
    {"codes of two and four bits", [](auto&, auto i) { return i % 2 == 0 ? i / 2 % 4 == 0 ? 9 : 1 : i % 8; }},
    {"lengths from 5 to 9", [](auto& random, auto) { return random() % 50 == 0 ? 32 : random(); }},
    {"geometric, codes of all lengths",
     [](auto& random, auto) { return std::countl_zero(std::uint32_t(random())) * 3; }},
    {"mostly zeros", [](auto& random, auto) { return random() % 10 == 0 ? random() : 0; }},
    {"two halves unlike each other",
     [](auto& random, auto i) { return i / 65536 % 2 == 0 ? random() % 3 : random(); }}};

Bytes Make(const Kind& kind, std::size_t size) {
    std::mt19937 random(static_cast<std::uint32_t>(size));
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = kind.byteAt(random, i);
    return bytes;
}

void ExpectSame(const oracle::Outcome& ours, const oracle::Outcome& plain) {
    EXPECT_EQ(ours.error, plain.error);
    EXPECT_EQ(ours.events, plain.events);
    EXPECT_TRUE(ours.bytes == plain.bytes);
    EXPECT_TRUE(ours.key == plain.key);
}

Bytes Damaged(Bytes container, std::mt19937& random) {
    const auto somewhere = [&](std::size_t from) { return from + random() % (container.size() - from); };
    switch (random() % 4) {
        case 0:
            container.resize(somewhere(0));
            break;
        case 1:
            container.resize(container.size() + random() % 30000, static_cast<std::uint8_t>(random()));
            break;
        case 2:
            container[somewhere(4)] ^= static_cast<std::uint8_t>(1U << random() % 8U);
            break;
        default:
            container[4 + random() % std::min<std::size_t>(container.size() - 4, 200)] =
                static_cast<std::uint8_t>(random());
    }
    return container;
}

TEST(Codec, IsTheOracleOnDataOfAllKinds) {
    std::mt19937 random(1);
    for (const Kind& kind : kinds) {
        for (const std::size_t size : {1U, 63U, 64U, 1000U, 5000U, 65537U, 300000U}) {
            SCOPED_TRACE(kind.name + std::string(", ") + std::to_string(size));
            const auto source = Make(kind, size);
            const auto encoded = oracle::Encode(source);
            ExpectSame(oracle::EncodeWithClass(source), encoded);
            ExpectSame(oracle::DecodeWithClass(encoded.bytes), oracle::Decode(encoded.bytes));
            for (int i = 0; i < 4; ++i) {
                const auto damaged = Damaged(encoded.bytes, random);
                ExpectSame(oracle::DecodeWithClass(damaged), oracle::Decode(damaged));
            }
        }
    }
}

TEST(Codec, IsTheOracleWithAKey) {
    std::mt19937 random(2);
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        const auto source = Make(kind, 3000);
        KeyArray key(12 + random() % 300);
        for (auto& row : key)
            row = {static_cast<std::int64_t>(random() % 4), static_cast<std::int64_t>(random() % 4)};
        const auto encoded = oracle::Encode(source, key);
        ExpectSame(oracle::EncodeWithClass(source, key), encoded);
        ExpectSame(oracle::DecodeWithClass(encoded.bytes, key), oracle::Decode(encoded.bytes, key));
        for (int i = 0; i < 20; ++i) {
            const auto damaged = Damaged(encoded.bytes, random);
            ExpectSame(oracle::DecodeWithClass(damaged, key), oracle::Decode(damaged, key));
        }
    }
}

TEST(Codec, IsTheOracleWhenWeightsAreEqual) {
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i) {
        Bytes source;
        const auto values = 2 + random() % 255;
        for (unsigned value = 0; value < values; ++value)
            source.insert(source.end(), 1 + random() % 3, static_cast<std::uint8_t>(value));
        EXPECT_TRUE(oracle::EncodeWithClass(source) == oracle::Encode(source)) << values;
    }
}

TEST(Codec, IsTheOracleOnWeightsThatMakeTheDeepestTrees) {
    Bytes source;
    std::size_t before = 1;
    std::size_t count = 1;
    for (std::uint8_t value = 0; value < 27; ++value) {
        source.insert(source.end(), count, value);
        before = std::exchange(count, count + before);
    }
    std::ranges::shuffle(source, std::mt19937(4));
    const auto encoded = oracle::EncodeWithClass(source);
    ExpectSame(encoded, oracle::Encode(source));
    ExpectSame(oracle::DecodeWithClass(encoded.bytes), oracle::Decode(encoded.bytes));
}

/// Codes that no encoder makes, in data long enough to be decoded in segments.
TEST(Decode, IsTheOracleOnCodesMadeByHand) {
    const std::string far(255, '1');
    const std::vector<std::vector<std::pair<std::uint8_t, std::string>>> codes = {
        {{1, "0"}, {2, "10"}},
        {{1, "0"}, {2, "01"}, {3, "1"}},
        {{1, "0"}, {2, far}},
        {{1, "00000000000000"}, {2, "00000000000001"}, {3, "1"}, {4, "01"}},
        {{1, far.substr(0, 200) + "0"}, {2, far.substr(0, 200) + "1"}},
        {{1, "000"}, {2, "111"}, {3, "010"}}};
    std::mt19937 random(5);
    for (const auto& table : codes) {
        for (const int stray : {0, 1, 40}) {
            std::string data;
            std::size_t symbols = 0;
            for (; data.size() < 400000; ++symbols)
                data += table[random() % table.size()].second;
            for (int i = 0; i < stray; ++i)
                data[random() % data.size()] = '1';
            for (const std::size_t length : {symbols, symbols / 3, symbols + 1000}) {
                const Coded coded{table, data, static_cast<std::uint32_t>(length),
                                  static_cast<std::uint8_t>(random() % 4)};
                const auto container = coded.Make();
                ExpectSame(oracle::DecodeWithClass(container), oracle::Decode(container));
            }
        }
    }
}

}  // namespace
