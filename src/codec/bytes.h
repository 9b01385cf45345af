#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>

namespace vento::codec {

/// Bytes that can be read more than once, from memory or from a file.
struct ByteSource {
    /// Unless it gives all that is left, `from` gives so many bytes at least.
    static constexpr std::size_t kLeastPiece = 1 << 17;

    std::size_t size = 0;
    /// The bytes from `offset` on, as many as are at hand, good until the next call. None at the end alone.
    std::function<std::span<const std::uint8_t>(std::size_t offset)> from;
};

/// `bytes` as a source. They must outlive it.
[[nodiscard]] inline ByteSource SourceOf(std::span<const std::uint8_t> bytes) {
    return {bytes.size(), [bytes](std::size_t offset) { return bytes.subspan(offset); }};
}

/// Where the result of a coding goes. Both throw if there is no room.
struct ByteSink {
    /// Is called once, before anything else: there will be so many bytes at the most.
    std::function<void(std::size_t most)> reserve;
    std::function<void(std::span<const std::uint8_t> bytes)> append;
};

/// The two bytes at `from` as a number, the first byte lowest.
[[nodiscard]] inline std::uint16_t Load16(const std::uint8_t* from) {
    if constexpr (std::endian::native == std::endian::little) {
        std::uint16_t value = 0;
        std::memcpy(&value, from, sizeof value);
        return value;
    } else {
        return static_cast<std::uint16_t>(from[0] | from[1] << 8U);
    }
}

/// The eight bytes at `from` as a number, the first byte lowest.
[[nodiscard]] inline std::uint64_t Load64(const std::uint8_t* from) {
    std::uint64_t value = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&value, from, sizeof value);
    } else {
        for (unsigned i = 0; i < 8; ++i)
            value |= std::uint64_t{from[i]} << 8 * i;
    }
    return value;
}

/// Puts `value` into the eight bytes at `to`, the lowest byte first.
inline void Store64(std::uint8_t* to, std::uint64_t value) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(to, &value, sizeof value);
    } else {
        for (unsigned i = 0; i < 8; ++i)
            to[i] = static_cast<std::uint8_t>(value >> 8 * i);
    }
}

}  // namespace vento::codec
