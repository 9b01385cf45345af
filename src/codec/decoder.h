#pragma once

#include "codec/bytes.h"
#include "codec/cls_huffman.h"
#include "codec/progress_meter.h"

namespace vento::codec {

/// Decodes the coded container that `source` is. Returns false, and does nothing, if its source length is 0.
/// The final 100 per cent is not reported. Throws RangeError, OverflowError and RaisedError, and what is in
/// the sink is then not to be used.
bool DecodeCoded(const ByteSource& source, KeyArray* codeCript, ProgressMeter& progress,
                 const ByteSink& decoded);

}  // namespace vento::codec
