#include <array>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include "codec/cls_huffman.h"

/// Two threads on two objects, for the thread sanitizer to look at. They share the source alone.
namespace {

using vento::codec::clsHuffman;
using Bytes = std::vector<std::uint8_t>;

bool ThereAndBack(const Bytes& source) {
    int told = 0;
    clsHuffman codec;
    codec.Progress = [&](std::int16_t&) { ++told; };
    vento::codec::KeyArray key(244, {1, 2});
    bool whole = codec.DecodeBytes(codec.EncodeBytes(source)).bytes == source;
    whole = whole && codec.DecodeBytes(codec.EncodeBytes(source, &key), &key).bytes == source;
    return whole && told > 100;
}

}  // namespace

int main() {
    Bytes source(300000);
    for (std::size_t i = 0; i < source.size(); ++i)
        source[i] = static_cast<std::uint8_t>(i * i / 1000 % 97);
    std::array<bool, 2> whole{};
    std::thread other([&] { whole[1] = ThereAndBack(source); });
    whole[0] = ThereAndBack(source);
    other.join();
    return whole[0] && whole[1] ? 0 : 1;
}
