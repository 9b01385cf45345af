#include "codec/lanes.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "codec/bytes.h"

namespace vento::codec {
namespace {

using Entry = DecodeTable::Entry;

/// So many look-ups use up no more bits than one load of eight bytes holds for certain.
constexpr unsigned kLookUpsPerLoad = 5;
constexpr std::uint64_t kMostBitsPerLoad = std::uint64_t{kLookUpsPerLoad} * DecodeTable::kMostIndexBits;
static_assert(kMostBitsPerLoad <= 56);

/// And so many loads give more bits than a walk behind a look-up can use up.
constexpr std::uint64_t kLoadsPerWalk = 2;

/// The bits from `position` on, 57 of them at least.
std::uint64_t BitsAt(const std::uint8_t* data, std::uint64_t position) {
    return Load64(data + position / 8) >> position % 8;
}

/// A table pays only if there is enough to look up in it.
unsigned IndexBitsFor(std::size_t dataBytes) {
    return dataBytes > 8192 ? DecodeTable::kMostIndexBits : 9;
}

/// A code that is within what a look-up looks at, its first bit lowest.
struct ShortCode {
    std::uint32_t bits;
    unsigned count;
    std::int16_t symbol;
};

/// Fills a table: for each code alone, and then over that for each sequence of codes that fits.
class TableBuilder {
  public:
    TableBuilder(std::span<Entry> entries, unsigned indexBits) : entries_(entries), indexBits_(indexBits) {}

    /// Goes through the tree level by level, which gives the codes in ascending order of length. Where there
    /// is no code the entries say how far a walk comes.
    void FindCodes(const CodeTree& codeTree) {
        std::array<ShortCode, std::tuple_size_v<CodeTree>> visits;
        std::size_t end = 0;
        const auto visit = [&](std::int16_t node, std::uint32_t bits, unsigned count) {
            if (node == -1) {
                Fill(Unfinished(node), bits, count);
            } else if (const auto symbol = codeTree[static_cast<std::size_t>(node)].Symbol; symbol != -1) {
                codes_[codeCount_++] = {bits, count, symbol};
            } else if (count == indexBits_) {
                entries_[bits] = Unfinished(node);
            } else {
                visits[end++] = {bits, count, node};
            }
        };
        visit(0, 0, 0);
        for (std::size_t i = 0; i < end; ++i) {
            const auto [bits, count, node] = visits[i];
            visit(codeTree[static_cast<std::size_t>(node)].ZeroChild, bits, count + 1);
            visit(codeTree[static_cast<std::size_t>(node)].OneChild, bits | 1U << count, count + 1);
        }
    }

    /// `entry` is what `bits`, `count` of them, come to.
    void Extend(Entry entry = 0, std::uint32_t bits = 0, unsigned count = 0) {
        constexpr Entry kSymbols = 0x00ffffffffffff00;
        const unsigned symbols = DecodeTable::CountOf(entry) + 1;
        for (const ShortCode& code : std::span(codes_).first(codeCount_)) {
            const unsigned newCount = count + code.count;
            if (newCount > indexBits_) return;
            const Entry longer = (entry & kSymbols) | newCount |
                                 static_cast<Entry>(code.symbol) << 8 * symbols | Entry{symbols} << 56;
            const std::uint32_t newBits = bits | code.bits << count;
            Fill(longer, newBits, newCount);
            if (symbols < DecodeTable::kMostSymbols) Extend(longer, newBits, newCount);
        }
    }

  private:
    static Entry Unfinished(std::int16_t node) {
        return DecodeTable::kNone | Entry{static_cast<std::uint16_t>(node)} << 8;
    }

    void Fill(Entry entry, std::uint32_t bits, unsigned count) {
        for (std::size_t i = bits; i < entries_.size(); i += std::size_t{1} << count)
            entries_[i] = entry;
    }

    std::span<Entry> entries_;
    unsigned indexBits_;
    std::array<ShortCode, 256> codes_;
    std::size_t codeCount_ = 0;
};

/// A lane in the hot loop: the byte that its bits were loaded from, those of them that are left, above which
/// a 1 marks how many are gone, and where its symbols go.
struct Stream {
    static constexpr std::uint64_t kMark = std::uint64_t{1} << 63;

    const std::uint8_t* from;
    std::uint64_t bits;
    std::uint8_t* out;
    Entry entry = 0;

    [[nodiscard, gnu::always_inline]] unsigned Gone() const {
        return static_cast<unsigned>(std::countl_zero(bits));
    }

    [[gnu::always_inline]] void Load(unsigned gone) {
        from += gone / 8;
        bits = (Load64(from) | kMark) >> gone % 8;
    }

    [[gnu::always_inline]] void LookUp(const DecodeTable::View& table) {
        entry = table.At(bits);
        Store64(out, DecodeTable::SymbolsFirst(entry));
        bits >>= DecodeTable::BitsOf(entry);
        out += DecodeTable::CountOf(entry);
    }

    /// One symbol, from the node on that the table has led to. False, and nothing done, if the bits at hand
    /// end before it, or lead nowhere.
    bool WalkOn(const CodeTree& codeTree, unsigned indexBits) {
        std::uint64_t left = bits >> indexBits;
        for (std::int16_t node = DecodeTable::NodeOf(entry); node != -1; left >>= 1) {
            const CodeNode& here = codeTree[static_cast<std::size_t>(node)];
            if (here.Symbol != -1) {
                *out++ = static_cast<std::uint8_t>(here.Symbol);
                bits = left;
                Load(Gone());
                return true;
            }
            if (left == 1) return false;
            node = (left & 1) != 0 ? here.OneChild : here.ZeroChild;
        }
        return false;
    }
};

/// What the lanes have in common.
struct Work {
    const std::uint8_t* data;
    std::uint8_t* symbols;
    DecodeTable::View table;
    const CodeTree& codeTree;
};

/// Moves the lanes by so many loads of bits. The look-ups of all lanes stand side by side: while one waits
/// for its entry, the others go on. False if a lane has come to a code that takes other means.
template <std::size_t... i>
[[gnu::always_inline]] inline bool RunLanes(const Work& work, std::array<Lane, sizeof...(i)>& lanes,
                                            std::uint64_t loads, std::index_sequence<i...>) {
    std::array<Stream, sizeof...(i)> stream = {
        Stream{work.data + lanes[i].position / 8, 0, work.symbols + lanes[i].out}...};
    (stream[i].Load(lanes[i].position % 8), ...);
    const DecodeTable::View table = work.table;  // for all that the compiler knows, a symbol could change it
    bool walked = true;
    while (loads > 0 && walked) {
        for (unsigned k = 0; k < kLookUpsPerLoad; ++k)
            (stream[i].LookUp(table), ...);
        (stream[i].Load(stream[i].Gone()), ...);
        --loads;
        if (((... | stream[i].entry) & DecodeTable::kNone) != 0) [[unlikely]] {
            const auto walk = [&](Stream& one) {
                const bool found = (one.entry & DecodeTable::kNone) == 0;
                walked = (found || one.WalkOn(work.codeTree, table.indexBits)) && walked;
            };
            (walk(stream[i]), ...);
            loads -= std::min(loads, kLoadsPerWalk);
        }
    }
    ((lanes[i].position = 8 * static_cast<std::uint64_t>(stream[i].from - work.data) + stream[i].Gone(),
      lanes[i].out = static_cast<std::size_t>(stream[i].out - work.symbols)),
     ...);
    return walked;
}

template <std::size_t count>
bool RunPlain(const Work& work, std::array<Lane, count>& lanes, std::uint64_t loads) {
    return RunLanes(work, lanes, loads, std::make_index_sequence<count>());
}

#ifdef __x86_64__
template <std::size_t count>
[[gnu::target("bmi,bmi2,lzcnt")]] bool RunBmi2(const Work& work, std::array<Lane, count>& lanes,
                                               std::uint64_t loads) {
    return RunLanes(work, lanes, loads, std::make_index_sequence<count>());
}
#endif

}  // namespace

DecodeTable::DecodeTable(const CodeTree& codeTree, unsigned indexBits)
    : indexBits_(indexBits), entries_(std::size_t{1} << indexBits) {
    TableBuilder builder(entries_, indexBits);
    builder.FindCodes(codeTree);
    builder.Extend();
}

LaneDecoder::LaneDecoder(const CodedHeader& header, std::size_t dataSize, HotLoop hotLoop)
    : header_(header),
      hotLoop_(hotLoop),
      table_(header.codeTree, IndexBitsFor(dataSize)),
      room_(std::min(kMostRoom, 8 * dataSize / header.shortestCode)),
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
    const auto symbol = DecodeTable::FirstOf(entry);
    symbols_[lane.out++] = symbol;
    lane.position += header_.codeLengths[symbol];
}

HotLoop FastestHotLoop() {
#ifdef __x86_64__
    // Every processor with BMI2 has the rest of what that loop takes.
    if (static_cast<bool>(__builtin_cpu_supports("bmi2"))) return HotLoop::bmi2;
#endif
    return HotLoop::plain;
}

/// Moves the lanes until one of them is near its stop.
template <std::size_t count>
void LaneDecoder::RunFast(std::span<const std::uint8_t> data, std::array<Lane, count>& lanes) const {
    const auto loadsLeft = [&] {
        std::uint64_t fewest = ~std::uint64_t{0};
        for (const Lane& lane : lanes) {
            const std::uint64_t left = lane.stop - std::min(lane.position, lane.stop);
            fewest = std::min(fewest, left / kMostBitsPerLoad);
        }
        return fewest;
    };
    auto run = RunPlain<count>;
#ifdef __x86_64__
    if (hotLoop_ == HotLoop::bmi2) run = RunBmi2<count>;
#endif
    const Work work{data.data(), symbols_.get(), table_.Look(), header_.codeTree};
    for (std::uint64_t loads = loadsLeft(); loads > 0; loads = loadsLeft()) {
        if (run(work, lanes, loads)) continue;
        for (Lane& lane : lanes) {
            if (lane.position < lane.stop) StepOne(data, lane);
        }
    }
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
