#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codec/cls_huffman.h"
#include "codec/progress_meter.h"

namespace vento::codec {

/// Makes `container` the container of `source`, in the stored form if that has to be. `container` keeps what
/// room it has; its content does not matter. The final 100 per cent is not reported. Returns whether the
/// form is the coded one. Throws RangeError and OverflowError, and `container` is then not to be used.
bool Encode(std::span<const std::uint8_t> source, const KeyArray* codeCript, ProgressMeter& progress,
            std::vector<std::uint8_t>& container);

}  // namespace vento::codec
