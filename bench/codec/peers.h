#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "codec/inputs.h"

namespace bench {

/// One way to compress and one to decompress. Both write into a buffer that they may enlarge and whose
/// content is that of the call before. Either may be missing.
struct Peer {
    std::string name;
    std::function<void(std::span<const std::uint8_t> source, Bytes& packed)> encode;
    std::function<void(std::span<const std::uint8_t> packed, Bytes& source)> decode;
};

/// Ours: counting, tables, checksum and events included.
Peer Vento();

/// huff0 in blocks of 128 KiB, tables included, with one stream or with four in a block, and tables of one
/// symbol a look-up or of two. A block that it refuses is stored.
Peer Huff0(unsigned streams, unsigned symbols);

/// Deflate without matches, by zlib; libdeflate decodes what zlib has made.
Peer ZlibHuffmanOnly();
Peer Libdeflate();

Peer Memcpy();

}  // namespace bench
