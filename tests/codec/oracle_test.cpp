#include "codec/oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <thread>

#include "codec/containers.h"
#include "codec/decoder.h"

namespace oracle {
namespace {

/// Data that put the fast ways and their limits to the test.
using Kind = std::pair<const char*, std::function<std::uint8_t(std::mt19937&, std::size_t)>>;

const std::vector<Kind> kKinds = {
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
        bytes[i] = kind.second(random, i);
    return bytes;
}

Bytes Damaged(Bytes container, std::mt19937& random) {
    const auto byte = static_cast<std::uint8_t>(random());
    if (random() % 2 == 0) {
        container.resize(random() % (2 * container.size()), byte);
    } else {
        const std::size_t end = std::min<std::size_t>(container.size(), random() % 2 == 0 ? 200 : SIZE_MAX);
        container[4 + random() % (end - 4)] = byte;
    }
    return container;
}

void ExpectTheSameDecoding(const Bytes& container, const std::optional<KeyArray>& key = {}) {
    const auto plain = Decode(container, key);
    const auto ours = DecodeWithClass(container, key);
    EXPECT_EQ(ours.error, plain.error);
    EXPECT_TRUE(ours == plain);
}

/// There and back, and back from so many damaged containers.
void ExpectTheOracle(const Bytes& source, unsigned damages = 0, const std::optional<KeyArray>& key = {}) {
    const auto encoded = Encode(source, key);
    EXPECT_TRUE(EncodeWithClass(source, key) == encoded);
    ExpectTheSameDecoding(encoded.bytes, key);
    std::mt19937 random(damages + static_cast<std::uint32_t>(source.size()));
    while (damages-- > 0)
        ExpectTheSameDecoding(Damaged(encoded.bytes, random), key);
}

TEST(Codec, IsTheOracleOnDataOfAllKindsWithoutAKeyAndWithOne) {
    std::mt19937 random(2);
    for (const Kind& kind : kKinds) {
        KeyArray key(12 + random() % 300);
        for (auto& row : key)
            row = {std::int64_t(random() % 4), std::int64_t(random() % 4)};
        for (const std::size_t size : {1U, 63U, 64U, 1000U, 5000U, 65537U, 300000U}) {
            SCOPED_TRACE(kind.first + std::string(", ") + std::to_string(size));
            ExpectTheOracle(Make(kind, size), 4);
            if (size <= 5000) ExpectTheOracle(Make(kind, size), 5, key);
        }
    }
}

/// Weights that are equal, and those that make the deepest trees: long codes side by side, with a pair table
/// for them and without.
TEST(Codec, IsTheOracleOnTreesOfAllShapes) {
    std::mt19937 random(3);
    for (unsigned values = 2; values <= 256; ++values) {
        Bytes source;
        for (unsigned value = 0; value < values; ++value)
            source.insert(source.end(), 1 + random() % 3, static_cast<std::uint8_t>(value));
        ExpectTheOracle(source);
    }
    for (const int values : {27, 21}) {
        Bytes source(3, 0);  // leave a byte that is not full
        std::size_t before = 1;
        std::size_t count = 1;
        for (int value = 1; value <= values; ++value) {
            source.insert(source.end(), count, static_cast<std::uint8_t>(values - value));
            before = std::exchange(count, count + before);
        }
        ExpectTheOracle(source);
    }
}

/// CTest runs this one under the thread sanitizer too.
TEST(Codec, ServesTwoThreadsAtOnce) {
    const Bytes source = Make(kKinds[3], 300000);
    std::thread other([&] { ExpectTheOracle(source, 0, KeyArray(244, {1, 2})); });
    ExpectTheOracle(source, 1);
    other.join();
}

#if defined(__x86_64__) && defined(__linux__)
TEST(Decode, TakesTheLoopThatTheProcessorIsFor) {
    std::ifstream info("/proc/cpuinfo");
    const std::string text(std::istreambuf_iterator<char>(info), {});
    const bool has = text.find(" bmi2 ") != std::string::npos;
    EXPECT_EQ(vento::codec::FastestHotLoop() == vento::codec::HotLoop::bmi2, has);
}
#endif

/// Codes that no encoder makes, in data long enough to be decoded in segments.
TEST(Decode, IsTheOracleOnCodesMadeByHand) {
    const std::string far(254, '1');
    const std::string other = "10" + std::string(253, '0');
    const std::vector<std::vector<std::pair<std::uint8_t, std::string>>> codes = {
        {{1, "0"}, {2, "10"}},
        {{1, "0"}, {2, "01"}, {3, "1"}},
        {{1, "00000000000000"}, {2, "00000000000001"}, {3, "1"}, {4, "01"}},
        {{1, far + "0"}, {2, far + "1"}},
        {{1, "0"}, {2, "1"}, {3, "1"}},
        {{1, "0"}, {2, far + "1"}, {3, other}, {4, "110"}},   // 512 nodes
        {{1, "0"}, {2, far + "1"}, {3, other}, {4, "1100"}},  // 513
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
            for (const std::size_t length : {symbols, symbols / 3, symbols + 1000})
                ExpectTheSameDecoding(Coded{table, data, length, unsigned(random() % 4)}.Make());
        }
    }
}

}  // namespace
}  // namespace oracle
