#include "codec/lanes.h"

#include <algorithm>
#include <utility>

#include "codec/bytes.h"

namespace vento::codec {
namespace {

using Entry = DecodeTable::Entry;

/// So many look-ups use up no more bits than one load of eight bytes holds for certain.
constexpr unsigned kLookUpsPerLoad = 5;
constexpr std::uint64_t kMostBitsPerLoad = std::uint64_t{kLookUpsPerLoad} * DecodeTable::kMostIndexBits;
static_assert(kMostBitsPerLoad <= 57);

/// And so many loads give what the longest code uses up.
constexpr std::uint64_t kLoadsPerCode = 255 / kMostBitsPerLoad + 1;

/// The bits from `position` on, 57 of them at least.
std::uint64_t BitsAt(const std::uint8_t* data, std::uint64_t position) {
    return Load64(data + position / 8) >> position % 8;
}

/// A table pays only if there is enough to look up in it.
unsigned IndexBitsFor(std::size_t dataBytes) {
    return dataBytes > 8192 ? DecodeTable::kMostIndexBits : 9;
}

/// A walk on its way: what it has completed, and the node that it has come to, -1 once it is over.
struct Walk {
    DecodeTable::Entry entry = 0;
    std::int16_t node = 0;
};

Walk Step(const CodeTree& codeTree, Walk walk, bool bit, unsigned bitsWalked) {
    if (walk.node == -1) return walk;
    const CodeNode& here = codeTree[static_cast<std::size_t>(walk.node)];
    walk.node = bit ? here.OneChild : here.ZeroChild;
    if (walk.node == -1) return walk;
    const auto symbol = codeTree[static_cast<std::size_t>(walk.node)].Symbol;
    if (symbol == -1) return walk;
    const unsigned count = DecodeTable::CountOf(walk.entry);
    walk.entry = (walk.entry & 0xffffffffffff) | static_cast<DecodeTable::Entry>(symbol) << 8 * count |
                 DecodeTable::Entry{bitsWalked} << 48 | DecodeTable::Entry{count + 1} << 56;
    walk.node = count + 1 < DecodeTable::kMostSymbols ? 0 : -1;
    return walk;
}

}  // namespace

DecodeTable::DecodeTable(const CodeTree& codeTree, unsigned indexBits)
    : indexBits_(indexBits), entries_(std::size_t{1} << indexBits) {
    std::array<std::int16_t, std::size_t{1} << kMostIndexBits> nodes;
    nodes[0] = 0;
    // Each bit more makes two walks of every walk so far.
    for (unsigned bits = 0; bits < indexBits; ++bits) {
        const std::size_t half = std::size_t{1} << bits;
        for (std::size_t i = 0; i < half; ++i) {
            const Walk walk{entries_[i], nodes[i]};
            const Walk zero = Step(codeTree, walk, false, bits + 1);
            const Walk one = Step(codeTree, walk, true, bits + 1);
            entries_[i] = zero.entry;
            nodes[i] = zero.node;
            entries_[i + half] = one.entry;
            nodes[i + half] = one.node;
        }
    }
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (CountOf(entries_[i]) == 0) entries_[i] = static_cast<std::uint16_t>(nodes[i]);
    }
}

LaneDecoder::LaneDecoder(const CodedHeader& header, std::size_t dataSize)
    : header_(header),
      table_(header.codeTree, IndexBitsFor(dataSize)),
      symbols_(std::make_unique_for_overwrite<std::uint8_t[]>(Begin(kLanes))) {}

/// One symbol, from `node` on, to which the bits before the lane's position have led.
void LaneDecoder::WalkOn(std::span<const std::uint8_t> data, Lane& lane, std::int16_t node) const {
    const std::uint64_t end = 8 * std::uint64_t{data.size()};
    for (; node != -1 && lane.position < end; ++lane.position) {
        const CodeNode& here = header_.codeTree[static_cast<std::size_t>(node)];
        if (here.Symbol != -1) {
            symbols_[lane.out++] = static_cast<std::uint8_t>(here.Symbol);
            return;
        }
        const bool bit = (data[lane.position / 8] >> lane.position % 8 & 1) != 0;
        node = bit ? here.OneChild : here.ZeroChild;
    }
    lane.position = Lane::kLost;
}

/// One symbol, however many the table would give.
void LaneDecoder::StepOne(std::span<const std::uint8_t> data, Lane& lane) const {
    const Entry entry = table_.At(BitsAt(data.data(), lane.position));
    if (DecodeTable::CountOf(entry) == 0) {
        lane.position += table_.IndexBits();
        WalkOn(data, lane, DecodeTable::NodeOf(entry));
        return;
    }
    const auto symbol = static_cast<std::uint8_t>(entry);
    symbols_[lane.out++] = symbol;
    lane.position += header_.codeLengths[symbol];
}

/// Moves the lanes until one of them is near its stop. The look-ups of all lanes stand side by side, each
/// lane's position and place in registers of their own: place x 256 + the bits used up since the last load.
template <std::size_t count>
void LaneDecoder::RunFast(std::span<const std::uint8_t> data, std::array<Lane, count>& lanes) const {
    const std::uint8_t* const bytes = data.data();
    std::uint8_t* const symbols = symbols_.get();
    const DecodeTable::View table = table_.Look();
    const auto loadsLeft = [&] {
        std::uint64_t fewest = ~std::uint64_t{0};
        for (const Lane& lane : lanes) {
            const std::uint64_t left = lane.stop - std::min(lane.position, lane.stop);
            fewest = std::min(fewest, left / kMostBitsPerLoad);
        }
        return fewest;
    };
    const auto run = [&]<std::size_t... i>(std::index_sequence<i...>) {
        std::uint64_t loads = loadsLeft();
        std::array<std::uint64_t, count> position = {lanes[i].position...};
        std::array<std::uint64_t, count> place = {std::uint64_t{lanes[i].out} << 8 ...};
        while (loads > 0) {
            std::array<std::uint64_t, count> bits = {BitsAt(bytes, position[i])...};
            std::array<Entry, count> entry{};
            const auto lookUp = [&](std::size_t lane) {
                entry[lane] = table.At(bits[lane]);
                Store64(symbols + (place[lane] >> 8), entry[lane]);
                entry[lane] = DecodeTable::CountAndBitsOf(entry[lane]);
                bits[lane] >>= static_cast<unsigned>(entry[lane]) & 63U;
                place[lane] += entry[lane];
            };
            for (unsigned k = 0; k < kLookUpsPerLoad; ++k)
                (lookUp(i), ...);
            ((position[i] += place[i] & 0xff, place[i] &= ~std::uint64_t{0xff}), ...);
            --loads;
            const bool allFound = (... && static_cast<bool>(entry[i]));
            if (!allFound) [[unlikely]] {
                const auto goOn = [&](std::size_t lane) {
                    if (entry[lane] != 0) return;
                    Lane slow{position[lane], 0, static_cast<std::size_t>(place[lane] >> 8)};
                    StepOne(data, slow);
                    position[lane] = slow.position;
                    place[lane] = std::uint64_t{slow.out} << 8;
                    loads = slow.position == Lane::kLost ? 0 : loads - std::min(loads, kLoadsPerCode);
                };
                (goOn(i), ...);
            }
        }
        ((lanes[i].position = position[i], lanes[i].out = static_cast<std::size_t>(place[i] >> 8)), ...);
    };
    while (loadsLeft() > 0)
        run(std::make_index_sequence<count>());
}

void LaneDecoder::Run(std::span<const std::uint8_t> data, std::array<Lane, kLanes>& lanes) const {
    RunFast(data, lanes);
    for (Lane& lane : lanes)
        Run(data, lane);
}

void LaneDecoder::Run(std::span<const std::uint8_t> data, Lane& lane) const {
    std::array<Lane, 1> one = {lane};
    RunFast(data, one);
    lane = one[0];
    while (lane.position < lane.stop)
        StepOne(data, lane);
}

}  // namespace vento::codec
