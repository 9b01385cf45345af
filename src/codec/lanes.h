#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "codec/container.h"
#include "codec/decode_table.h"

namespace vento::codec {

/// A decoder on its way through a part of the data area. Positions are in bits from the start of the area.
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
    static constexpr std::size_t kLanes = 4;
    /// No lane may stop nearer to the end of the data area.
    static constexpr std::uint64_t kMargin = 128;
    /// Each lane has room for so many symbols.
    static constexpr std::size_t kRoom = 32768;

    /// `header` and `data`, the data area, must outlive the decoder.
    LaneDecoder(const CodedHeader& header, std::span<const std::uint8_t> data);

    /// Where the symbols of a lane begin.
    static constexpr std::size_t Begin(std::size_t lane) { return lane * (kRoom + kSlack); }

    /// Moves each lane over whole codes to the first position that is not before its stop, and writes the
    /// symbols to its `out`, which moves along. A lane that meets something else than a code, or the end of
    /// the data, gets lost.
    void Run(std::array<Lane, kLanes>& lanes) const;
    void Run(Lane& lane) const;

    [[nodiscard]] std::span<const std::uint8_t> Symbols(std::size_t begin, std::size_t end) const {
        return {symbols_.get() + begin, end - begin};
    }

  private:
    /// A look-up writes eight bytes, however few symbols it has found.
    static constexpr std::size_t kSlack = 64;

    template <std::size_t count>
    void RunFast(std::array<Lane, count>& lanes) const;
    void StepOne(Lane& lane) const;
    void WalkOn(Lane& lane, std::int16_t node) const;

    const CodedHeader& header_;
    std::span<const std::uint8_t> data_;
    DecodeTable table_;
    std::unique_ptr<std::uint8_t[]> symbols_;
};

}  // namespace vento::codec
