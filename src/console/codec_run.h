#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "codec/cls_huffman.h"
#include "console/commands.h"

namespace vento::console {

/// What a command has to work with: the codec, which tells its progress and can be interrupted, and the key,
/// null if there is none.
struct CodecTools {
    codec::clsHuffman& codec;
    codec::KeyArray* key;
    /// The source, where the codec can't take it from its file: standard input, and files whose size does not
    /// say how much is in them.
    const std::optional<std::vector<std::uint8_t>>& bytes;
};

/// Lets the codec work on the file that the options name, and keeps account of it in the fields of `answer`.
/// `work` sets `result` and `bytesOut` in them. Throws Failure if the key can't be used or the work ends in
/// an error, EndedAtOnce after Ctrl-C.
void RunCodec(const Console& console, Answer& answer, const std::function<void(const CodecTools&)>& work);

}  // namespace vento::console
