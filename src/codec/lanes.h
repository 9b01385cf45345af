#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "codec/container.h"
#include "codec/decoder.h"

namespace vento::codec {

/// The walk through the code tree, done beforehand for every value that the next few bits can have.
class DecodeTable {
  public:
    /// Byte 0: how many bits the symbols take that a walk from the root completes, in its lowest 6 bits,
    /// which is what a shift looks at; bytes 1 to 6: these symbols, in order; byte 7: how many they are. If
    /// there is none, byte 0 is kNone and the node that the walk has come to stands in the next 16 bits, -1
    /// for none.
    using Entry = std::uint64_t;
    static constexpr Entry kNone = 0x40;
    static constexpr unsigned kMostSymbols = 6;
    static constexpr unsigned kMostIndexBits = 11;

    /// A table indexed by the next `indexBits` bits, the first of them lowest.
    DecodeTable(const CodeTree& codeTree, unsigned indexBits);

    [[nodiscard]] Entry At(std::uint64_t bits) const { return Look().At(bits); }
    [[nodiscard]] unsigned IndexBits() const { return indexBits_; }

    static unsigned CountOf(Entry entry) { return static_cast<unsigned>(entry >> 56); }
    static unsigned BitsOf(Entry entry) { return static_cast<unsigned>(entry & 63); }
    static std::uint8_t FirstOf(Entry entry) { return static_cast<std::uint8_t>(entry >> 8); }
    /// The symbols in the lowest bytes, and something else above them.
    static std::uint64_t SymbolsFirst(Entry entry) { return std::rotr(entry, 8); }
    static std::int16_t NodeOf(Entry entry) { return static_cast<std::int16_t>(entry >> 8 & 0xffff); }

    /// What a look-up needs, to be kept at hand.
    struct View {
        const Entry* entries;
        unsigned indexBits;

        [[nodiscard, gnu::always_inline]] Entry At(std::uint64_t bits) const {
            return entries[bits & ~(~std::uint64_t{0} << indexBits)];
        }
    };
    [[nodiscard]] View Look() const { return {entries_.data(), indexBits_}; }

  private:
    unsigned indexBits_;
    std::vector<Entry> entries_;
};

/// A decoder on its way through a part of the data area. Positions are in bits from the start of that part.
struct Lane {
    /// The position of a lane that met something else than a code.
    static constexpr std::uint64_t kLost = std::uint64_t{1} << 62;

    std::uint64_t position = 0;
    std::uint64_t stop = 0;
    /// Where in the symbols of the decoder its next one goes.
    std::size_t out = 0;
};

/// Decodes stretches of the data area, several at the same time: while one lane waits for memory, the others
/// work.
class LaneDecoder {
  public:
    static constexpr std::size_t kLanes = 6;
    /// No lane may stop nearer to the end of the data area.
    static constexpr std::uint64_t kMargin = 128;

    /// `header` must outlive the decoder. The data area is `dataSize` bytes long.
    LaneDecoder(const CodedHeader& header, std::size_t dataSize, HotLoop hotLoop);

    /// Each lane has room for so many symbols.
    [[nodiscard]] std::size_t Room() const { return room_; }

    /// Where the symbols of a lane begin.
    [[nodiscard]] std::size_t Begin(std::size_t lane) const { return lane * (room_ + kSlack); }

    /// In `data`, a part of the area, moves each lane over whole codes to the first position that is not
    /// before its stop, and writes the symbols to its `out`, which moves along. A lane that meets something
    /// else than a code, or the end of the data, gets lost.
    void Run(std::span<const std::uint8_t> data, std::array<Lane, kLanes>& lanes) const;
    void Run(std::span<const std::uint8_t> data, Lane& lane) const;

    [[nodiscard]] std::span<const std::uint8_t> Symbols(std::size_t begin, std::size_t end) const {
        return {symbols_.get() + begin, end - begin};
    }

  private:
    /// For most symbols of a lane, however much there is to decode.
    static constexpr std::size_t kMostRoom = 32768;
    /// A look-up writes eight bytes, however few symbols it has found.
    static constexpr std::size_t kSlack = 64;

    template <std::size_t count>
    void RunFast(std::span<const std::uint8_t> data, std::array<Lane, count>& lanes) const;
    void StepOne(std::span<const std::uint8_t> data, Lane& lane) const;
    void WalkOn(std::span<const std::uint8_t> data, Lane& lane, std::int16_t node) const;

    const CodedHeader& header_;
    HotLoop hotLoop_;
    DecodeTable table_;
    std::size_t room_;
    std::unique_ptr<std::uint8_t[]> symbols_;
};

}  // namespace vento::codec
