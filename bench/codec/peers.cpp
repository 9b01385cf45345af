#include "codec/peers.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "codec/cls_huffman.h"
#include "codec/encoder.h"

extern "C" {
using HUF_CElt = std::size_t;
using HUF_DTable = std::uint32_t;

std::size_t HUF_compress1X_repeat(void* dst, std::size_t dstSize, const void* src, std::size_t srcSize,
                                  unsigned maxSymbolValue, unsigned tableLog, void* workSpace,
                                  std::size_t wkspSize, HUF_CElt* hufTable, int* repeat, int flags);
std::size_t HUF_compress4X_repeat(void* dst, std::size_t dstSize, const void* src, std::size_t srcSize,
                                  unsigned maxSymbolValue, unsigned tableLog, void* workSpace,
                                  std::size_t wkspSize, HUF_CElt* hufTable, int* repeat, int flags);
std::size_t HUF_readDTableX1_wksp(HUF_DTable* table, const void* src, std::size_t srcSize, void* workSpace,
                                  std::size_t wkspSize, int flags);
std::size_t HUF_readDTableX2_wksp(HUF_DTable* table, const void* src, std::size_t srcSize, void* workSpace,
                                  std::size_t wkspSize, int flags);
std::size_t HUF_decompress1X_usingDTable(void* dst, std::size_t maxDstSize, const void* cSrc,
                                         std::size_t cSrcSize, const HUF_DTable* table, int flags);
std::size_t HUF_decompress4X_usingDTable(void* dst, std::size_t maxDstSize, const void* cSrc,
                                         std::size_t cSrcSize, const HUF_DTable* table, int flags);
unsigned HUF_isError(std::size_t code);
}

namespace bench {
namespace {

constexpr std::size_t kBlockSize = 128 << 10;

void Need(bool good, const char* who) {
    if (!good) throw std::runtime_error(std::string(who) + " failed");
}

int Huff0Flags() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("bmi2") != 0 ? 1 : 0;
#else
    return 0;
#endif
}

/// Each block: source length, packed length (0 if it is stored), both 32 bits wide, and the bytes.
struct BlockHead {
    std::uint32_t sourceLength;
    std::uint32_t packedLength;
};

class Huff0Codec {
  public:
    Huff0Codec(unsigned streams, unsigned symbols) : streams_(streams), symbols_(symbols) {}

    void Encode(std::span<const std::uint8_t> source, Bytes& packed) {
        packed.resize(source.size() + (source.size() / kBlockSize + 1) * (sizeof(BlockHead) + 1024));
        std::uint8_t* out = packed.data();
        for (std::size_t i = 0; i < source.size(); i += kBlockSize) {
            const auto block = source.subspan(i, std::min(kBlockSize, source.size() - i));
            const auto compress = streams_ == 1 ? HUF_compress1X_repeat : HUF_compress4X_repeat;
            const std::size_t size =
                compress(out + sizeof(BlockHead), block.size() + 1024, block.data(), block.size(), 255, 11,
                         work_.data(), sizeof work_, nullptr, nullptr, flags_);
            Need(HUF_isError(size) == 0 && size != 1, "huff0");
            const BlockHead head{static_cast<std::uint32_t>(block.size()), static_cast<std::uint32_t>(size)};
            std::memcpy(out, &head, sizeof head);
            if (size == 0) std::memcpy(out + sizeof head, block.data(), block.size());
            out += sizeof head + (size == 0 ? block.size() : size);
        }
        packed.resize(static_cast<std::size_t>(out - packed.data()));
    }

    void Decode(std::span<const std::uint8_t> packed, Bytes& source) {
        std::size_t done = 0;
        while (!packed.empty()) {
            BlockHead head{};
            std::memcpy(&head, packed.data(), sizeof head);
            packed = packed.subspan(sizeof head);
            const std::size_t size = head.packedLength == 0 ? head.sourceLength : head.packedLength;
            if (source.size() < done + head.sourceLength) source.resize(done + head.sourceLength);
            if (head.packedLength == 0)
                std::memcpy(source.data() + done, packed.data(), size);
            else
                DecodeBlock(packed.first(size), std::span(source).subspan(done, head.sourceLength));
            packed = packed.subspan(size);
            done += head.sourceLength;
        }
        source.resize(done);
    }

  private:
    void DecodeBlock(std::span<const std::uint8_t> block, std::span<std::uint8_t> out) {
        // The first element holds the largest table that there is room for.
        table_[0] = symbols_ == 1 ? 11 * 0x01000001U : 12 * 0x01000001U;
        const auto read = symbols_ == 1 ? HUF_readDTableX1_wksp : HUF_readDTableX2_wksp;
        const std::size_t head =
            read(table_.data(), block.data(), block.size(), work_.data(), sizeof work_, flags_);
        Need(HUF_isError(head) == 0, "huff0");
        const auto decode = streams_ == 1 ? HUF_decompress1X_usingDTable : HUF_decompress4X_usingDTable;
        const std::size_t size =
            decode(out.data(), out.size(), block.data() + head, block.size() - head, table_.data(), flags_);
        Need(size == out.size(), "huff0");
    }

    unsigned streams_;
    unsigned symbols_;
    int flags_ = Huff0Flags();
    alignas(64) std::array<std::uint64_t, 2048> work_{};
    alignas(64) std::array<HUF_DTable, 4097> table_{};
};

void ZlibEncode(std::span<const std::uint8_t> source, Bytes& packed) {
    z_stream stream{};
    Need(deflateInit2(&stream, 1, Z_DEFLATED, -15, 9, Z_HUFFMAN_ONLY) == Z_OK, "zlib");
    packed.resize(source.size() + source.size() / 8 + 1024);
    stream.next_in = const_cast<Bytef*>(source.data());
    stream.avail_in = static_cast<uInt>(source.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    Need(deflate(&stream, Z_FINISH) == Z_STREAM_END, "zlib");
    packed.resize(stream.total_out);
    deflateEnd(&stream);
}

}  // namespace

Peer Vento() {
    return {"vento",
            [](std::span<const std::uint8_t> source, Bytes& packed) {
                int events = 0;
                vento::codec::ProgressMeter progress([&](std::int16_t&) { ++events; });
                const auto room = [&](std::size_t size) {
                    packed.resize(size);
                    return std::span(packed);
                };
                Need(vento::codec::Encode(vento::codec::SourceOf(source), nullptr, progress, room), "vento");
                progress.Finish();
                Need(events >= 3, "vento");
            },
            [](std::span<const std::uint8_t> packed, Bytes& source) {
                int events = 0;
                vento::codec::clsHuffman codec;
                codec.Progress = [&](std::int16_t&) { ++events; };
                Need(codec.DecodeBytes(packed, source).size == source.size() && events >= 2, "vento");
            }};
}

Peer Huff0(unsigned streams, unsigned symbols) {
    const auto codec = std::make_shared<Huff0Codec>(streams, symbols);
    return {"huff0 " + std::to_string(streams) + "X" + std::to_string(symbols),
            [codec](std::span<const std::uint8_t> source, Bytes& packed) { codec->Encode(source, packed); },
            [codec](std::span<const std::uint8_t> packed, Bytes& source) { codec->Decode(packed, source); }};
}

Peer ZlibHuffmanOnly() {
    return {"zlib", ZlibEncode, nullptr};
}

Peer Libdeflate() {
    const std::shared_ptr<libdeflate_decompressor> decompressor(libdeflate_alloc_decompressor(),
                                                                libdeflate_free_decompressor);
    // A stream of deflate does not say how long its source is: `source` comes in with that length.
    return {
        "libdeflate", ZlibEncode, [decompressor](std::span<const std::uint8_t> packed, Bytes& source) {
            Need(libdeflate_deflate_decompress(decompressor.get(), packed.data(), packed.size(),
                                               source.data(), source.size(), nullptr) == LIBDEFLATE_SUCCESS,
                 "libdeflate");
        }};
}

Peer Memcpy() {
    const auto copy = [](std::span<const std::uint8_t> from, Bytes& to) {
        to.resize(from.size());
        std::memcpy(to.data(), from.data(), from.size());
    };
    return {"memcpy", copy, copy};
}

}  // namespace bench
