#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codec/cls_huffman.h"
#include "codec/progress_meter.h"

namespace vento::codec {

/// Decodes a coded `container` into `decoded`, which keeps what room it has; its content does not matter.
/// Returns false, and does nothing, if the source length is 0. The final 100 per cent is not reported. Throws
/// RangeError, OverflowError and RaisedError, and `decoded` is then not to be used.
bool DecodeCoded(std::span<const std::uint8_t> container, KeyArray* codeCript, ProgressMeter& progress,
                 std::vector<std::uint8_t>& decoded);

}  // namespace vento::codec
