#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "codec/bytes.h"
#include "codec/cls_huffman.h"
#include "codec/code_tree.h"
#include "codec/progress_meter.h"

namespace vento::codec {

/// Gives room for so many bytes, once the size of a container is known. Throws if there is none.
using RoomFor = std::function<std::span<std::uint8_t>(std::size_t size)>;

/// Makes a container of `source`, in the stored form if that has to be. The final 100 per cent is not
/// reported. Returns whether the form is the coded one. Throws RangeError and OverflowError, and what is in
/// the room is then not to be used.
bool Encode(const ByteSource& source, const KeyArray* codeCript, ProgressMeter& progress,
            const RoomFor& room);

/// Writes the codes of all bytes of `source`, one after the other and the first bit of each first, into
/// `data`, which is exactly as long as they are together, and fills up the last byte with 0. No code is
/// longer than 49 bits. Reports from 12 to 100 per cent, one test in 10000 bytes. Throws RangeError if the
/// codes are longer or shorter than `data`; nothing is written outside it.
void WriteData(const ByteSource& source, const SymbolCodes& symbolCode, std::span<std::uint8_t> data,
               ProgressMeter& progress);

}  // namespace vento::codec
