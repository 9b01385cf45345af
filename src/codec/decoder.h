#pragma once

#include "codec/bytes.h"
#include "codec/cls_huffman.h"
#include "codec/progress_meter.h"

namespace vento::codec {

/// The loop that most of the time goes into is there once for all processors, and once for those with the
/// instructions of BMI2.
enum class HotLoop { plain, bmi2 };

[[nodiscard]] HotLoop FastestHotLoop();

/// Decodes the coded container that `source` is. Returns false, and does nothing, if its source length is 0.
/// The final 100 per cent is not reported. Throws RangeError, OverflowError and RaisedError, and what is in
/// the sink is then not to be used.
bool DecodeCoded(const ByteSource& source, KeyArray* codeCript, ProgressMeter& progress,
                 const ByteSink& decoded, HotLoop hotLoop = FastestHotLoop());

}  // namespace vento::codec
