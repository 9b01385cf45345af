#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "codec/oracle.h"

/// Containers made by hand, right and wrong.
namespace oracle {

inline Bytes FromHex(std::string hex) {
    std::erase(hex, ' ');
    Bytes bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

inline Bytes FromText(std::string_view text) {
    return {text.begin(), text.end()};
}

/// The bytes that a stream of bits, written as zeros and ones, fills.
inline Bytes FromBits(std::string_view bits) {
    Bytes bytes((bits.size() + 7) / 8);
    for (std::size_t i = 0; i < bits.size(); ++i)
        bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] | (bits[i] - '0') << i % 8);
    return bytes;
}

/// What a coded container begins with.
inline Bytes Head(unsigned checksum, std::size_t sourceLength, std::size_t tableCount) {
    Bytes bytes = {77, 65, 51, 13, static_cast<std::uint8_t>(checksum)};
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(sourceLength >> shift));
    bytes.push_back(static_cast<std::uint8_t>(tableCount));
    bytes.push_back(static_cast<std::uint8_t>(tableCount >> 8));
    return bytes;
}

/// A coded container whose symbols have these codes, in ascending order of symbol.
struct Coded {
    std::vector<std::pair<std::uint8_t, std::string>> codes;
    std::string data;
    std::size_t sourceLength = 0;
    unsigned checksum = 0;

    [[nodiscard]] Bytes Make() const {
        Bytes bytes = Head(checksum, sourceLength, codes.size());
        std::string codeArea;
        for (const auto& [symbol, code] : codes) {
            bytes.push_back(symbol);
            bytes.push_back(static_cast<std::uint8_t>(code.size()));
            codeArea += code;
        }
        for (const auto& area : {FromBits(codeArea), FromBits(data)})
            bytes.insert(bytes.end(), area.begin(), area.end());
        return bytes;
    }
};

}  // namespace oracle
