#include "codec/decoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <string>

#include "codec/container.h"
#include "codec/data_reader.h"

namespace vento::codec {

bool DecodeCoded(std::span<const std::uint8_t> container, KeyArray* codeCript, ProgressMeter& progress,
                 std::vector<std::uint8_t>& decoded) {
    const CodedHeader header = ReadHeader(container, codeCript);
    if (header.sourceLength == 0) return false;
    const auto checksum = ReadData(container, header, progress, decoded);
    ProgressPass(progress, 10000, decoded.size(), 11, 89).Until(decoded.size());
    if (checksum != header.checksum) {
        throw RaisedError("clsHuffman.Decode()",
                          "The data might be corrupted (checksum did not match expected value)");
    }
    return true;
}

}  // namespace vento::codec
