#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "codec/cls_huffman.h"

/// The codec once more, as slow and as plain as it can be: one bit a step, one array element a bit.
namespace oracle {

using Bytes = std::vector<std::uint8_t>;
using vento::codec::KeyArray;

/// All that a call leaves behind.
struct Outcome {
    Bytes bytes;
    std::vector<int> events;
    /// "" for none, "range", "overflow", or the source of a raised error.
    std::string error;
    std::optional<KeyArray> key;
    /// What the error says of itself, in which the oracle does not agree.
    std::string said{};

    bool operator==(const Outcome& other) const {
        return std::tie(bytes, events, error, key) ==
               std::tie(other.bytes, other.events, other.error, other.key);
    }
};

/// On an error `bytes` is what was passed in.
Outcome Encode(const Bytes& source, const std::optional<KeyArray>& key = {});
Outcome Decode(const Bytes& container, const std::optional<KeyArray>& key = {});

/// The same calls of the class itself.
Outcome EncodeWithClass(const Bytes& source, const std::optional<KeyArray>& key = {});
Outcome DecodeWithClass(const Bytes& container, const std::optional<KeyArray>& key = {});

}  // namespace oracle
