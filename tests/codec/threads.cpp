#include <array>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include "codec/cls_huffman.h"
#include "codec/vento_codec.h"

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

    const auto tell = [](void* context, std::int16_t) { return ++*static_cast<int*>(context), 0; };
    const vento_codec_options options = {nullptr, 0, tell, &told};
    Bytes container(vento_codec_encode_bound(source.size()));
    Bytes decoded(source.size());
    std::size_t size = 0;
    vento_codec_encode(source.data(), source.size(), container.data(), container.size(), &size, &options,
                       nullptr);
    vento_codec_decode(container.data(), size, decoded.data(), decoded.size(), &size, nullptr, &options,
                       nullptr);
    return whole && decoded == source && told > 100;
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
