#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codec/cls_huffman.h"
#include "codec/code_tree.h"

namespace vento::codec {

/// The fixed part of a coded container. Numbers are little-endian; a key block, where there is one, stands
/// before the symbol table.
///
///   0  1  2  3   4         5 .. 8         9, 10        11 ..
///   M  A  3  CR  checksum  source length  table count  symbol table
///
/// A stored container is "M", "A", "0", CR and the source bytes.
inline constexpr std::size_t kFormSize = 4;
inline constexpr std::size_t kChecksumOffset = 4;
inline constexpr std::size_t kSourceLengthOffset = 5;
inline constexpr std::size_t kTableCountOffset = 9;
inline constexpr std::size_t kTableOffset = 11;

/// The key block holds the first column of the first 12 rows of a key, then their second column.
inline constexpr std::size_t kKeyBlockRows = 12;
inline constexpr std::size_t kKeyBlockSize = 2 * kKeyBlockRows;

inline constexpr std::array<std::uint8_t, kFormSize> kStoredForm = {'M', 'A', '0', 13};
inline constexpr std::array<std::uint8_t, kFormSize> kCodedForm = {'M', 'A', '3', 13};

/// What `container` is. Throws RangeError if it has fewer than four bytes, RaisedError if it is marked as a
/// container of some other form.
[[nodiscard]] Form FormOf(std::span<const std::uint8_t> container);

/// What stands before the data area of a coded container.
struct CodedHeader {
    std::uint8_t checksum = 0;
    std::size_t sourceLength = 0;
    /// The code length of each byte value; 0 if it has none.
    std::array<std::uint8_t, 256> codeLengths{};
    /// Length of the shortest code; 0 if there is no code.
    unsigned shortestCode = 0;
    CodeTree codeTree;
    /// Offset of the data area.
    std::size_t dataOffset = 0;
};

/// The source length in the head of a coded `container`. Throws RangeError if it is cut off or negative.
[[nodiscard]] std::size_t SourceLengthOf(std::span<const std::uint8_t> container);

/// Reads up to the data area of a coded `container`, and overwrites the first 12 rows of `codeCript` if there
/// is one. Of a container with source length 0 nothing behind the length is read. Throws RangeError and
/// OverflowError.
[[nodiscard]] CodedHeader ReadHeader(std::span<const std::uint8_t> container, KeyArray* codeCript);

}  // namespace vento::codec
