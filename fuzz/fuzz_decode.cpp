#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "codec/oracle.h"

/// Any bytes as a container. The first says how many rows the key has; an even one stands for no key.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::optional<oracle::KeyArray> key;
    if (data[0] % 2 == 1) key.emplace(data[0]);
    const oracle::Bytes container(data + 1, data + size);
    if (oracle::DecodeWithClass(container, key) != oracle::Decode(container, key)) std::abort();
    return 0;
}
