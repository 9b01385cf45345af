#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "codec/oracle.h"

/// Any bytes as a source, there and back. The first says how many rows the key has, where an even one stands
/// for no key; the second, how often the rest is repeated.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    std::optional<oracle::KeyArray> key;
    if (data[0] % 2 == 1) key.emplace(data[0], std::array<std::int64_t, 2>{data[1] % 2, data[1] % 8});
    oracle::Bytes source;
    for (int i = 0; i <= data[1] % 16 && source.size() < 8192; ++i)
        source.insert(source.end(), data + 2, data + size);

    const auto encoded = oracle::EncodeWithClass(source, key);
    if (encoded != oracle::Encode(source, key)) std::abort();
    if (encoded.error.empty() && oracle::DecodeWithClass(encoded.bytes, key).bytes != source) std::abort();
    return 0;
}
