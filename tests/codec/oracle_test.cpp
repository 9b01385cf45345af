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

Bytes Damaged(Bytes container, std::mt19937& random) {
    const std::size_t near = std::min<std::size_t>(container.size() - 4, 200);
    switch (random() % 4) {
        case 0:
            container.resize(random() % container.size());
            break;
        case 1:
            container.resize(container.size() + random() % 30000, static_cast<std::uint8_t>(random()));
            break;
        case 2:
            container[4 + random() % (container.size() - 4)] ^=
                static_cast<std::uint8_t>(1U << random() % 8U);
            break;
        default:
            container[4 + random() % near] = static_cast<std::uint8_t>(random());
    }
    return container;
}

void ExpectSame(const oracle::Outcome& ours, const oracle::Outcome& plain) {
    EXPECT_EQ(ours.error, plain.error);
    EXPECT_EQ(ours.events, plain.events);
    EXPECT_TRUE(ours == plain);
}

/// There and back, and back from so many damaged containers.
void ExpectTheOracle(const Bytes& source, unsigned damages = 0, const std::optional<KeyArray>& key = {}) {
    const auto encoded = oracle::Encode(source, key);
    ExpectSame(oracle::EncodeWithClass(source, key), encoded);
    ExpectSame(oracle::DecodeWithClass(encoded.bytes, key), oracle::Decode(encoded.bytes, key));
    std::mt19937 random(damages + static_cast<std::uint32_t>(source.size()));
    for (unsigned i = 0; i < damages; ++i) {
        const auto damaged = Damaged(encoded.bytes, random);
        ExpectSame(oracle::DecodeWithClass(damaged, key), oracle::Decode(damaged, key));
    }
}

TEST(Codec, IsTheOracleOnDataOfAllKinds) {
    for (const Kind& kind : kinds) {
        for (const std::size_t size : {1U, 63U, 64U, 1000U, 5000U, 65537U, 300000U}) {
            SCOPED_TRACE(kind.name + std::string(", ") + std::to_string(size));
            ExpectTheOracle(Make(kind, size), 4);
        }
    }
}

TEST(Codec, IsTheOracleWithAKey) {
    std::mt19937 random(2);
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        KeyArray key(12 + random() % 300);
        for (auto& row : key)
            row = {static_cast<std::int64_t>(random() % 4), static_cast<std::int64_t>(random() % 4)};
        ExpectTheOracle(Make(kind, 3000), 20, key);
    }
}

TEST(Codec, IsTheOracleWhenWeightsAreEqual) {
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i) {
        Bytes source;
        const auto values = 2 + random() % 255;
        for (unsigned value = 0; value < values; ++value)
            source.insert(source.end(), 1 + random() % 3, static_cast<std::uint8_t>(value));
        ExpectTheOracle(source);
    }
}

/// Long codes side by side, with a pair table for them and without.
TEST(Codec, IsTheOracleOnWeightsThatMakeTheDeepestTrees) {
    for (std::uint8_t values : {std::uint8_t{27}, std::uint8_t{21}}) {
        Bytes source(3, 0);  // leave a byte that is not full
        std::size_t before = 1;
        std::size_t count = 1;
        while (values-- > 0) {
            source.insert(source.end(), count, values);
            before = std::exchange(count, count + before);
        }
        ExpectTheOracle(source);
    }
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
                const auto sum = static_cast<std::uint8_t>(random() % 4);
                const auto container = Coded{table, data, static_cast<std::uint32_t>(length), sum}.Make();
                ExpectSame(oracle::DecodeWithClass(container), oracle::Decode(container));
            }
        }
    }
}

}  // namespace
