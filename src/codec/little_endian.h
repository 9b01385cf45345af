#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace vento::codec {

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
