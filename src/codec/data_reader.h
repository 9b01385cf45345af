#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codec/container.h"
#include "codec/progress_meter.h"

namespace vento::codec {

/// Decodes the data area of `container` into `decoded`: the source length of `header`, or as many bytes as
/// the area gives. Returns the exclusive or of all of them. Reports up to 89 per cent, one test in 10000
/// bytes of the container. Throws RangeError if the data do not fit the code.
std::uint8_t ReadData(std::span<const std::uint8_t> container, const CodedHeader& header,
                      ProgressMeter& progress, std::vector<std::uint8_t>& decoded);

}  // namespace vento::codec
