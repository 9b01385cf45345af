#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>

#include "codec/encoder.h"

namespace vento::codec {
namespace {

/// One code, or two one behind the other. The last bit is bit 63, the first is bit 64 - n, and n, the number
/// of bits, stands in the lowest byte. 0 is none.
using Element = std::uint64_t;
using Elements = std::array<Element, 256>;

Element MakeElement(std::uint64_t code, unsigned count) {
    return code << (64 - count) | count;
}
unsigned CountOf(Element element) {
    return static_cast<unsigned>(element & 0xff);
}
std::uint64_t CodeOf(Element element) {
    return element >> (64 - CountOf(element));
}

Elements MakeElements(const SymbolCodes& symbolCode) {
    Elements elements{};
    for (std::size_t value = 0; value < elements.size(); ++value) {
        const CodeBits& code = symbolCode[value];
        if (code.Count > 0) elements[value] = MakeElement(code.Data.to_ullong(), code.Count);
    }
    return elements;
}

/// Elements on their way to a sink, one behind the other: the bits in the topmost places, and how many they
/// are in the lowest byte of `count`. Below the bits there is something else.
struct Run {
    std::uint64_t bits;
    std::uint32_t count;

    Run(Element element) : bits(element), count(static_cast<std::uint32_t>(element)) {}

    /// A shift looks at the lowest six bits alone, and a sum is right in its lowest byte.
    void Append(const Run& next) {
        bits = bits >> (next.count & 63) | next.bits;
        count += next.count;
    }
};

/// The codes of so many bytes. They are joined in halves, since what comes next waits for every join in a
/// row.
template <unsigned count>
Run Gather(const std::uint8_t* bytes, const Elements& elements) {
    if constexpr (count == 1) {
        return elements[*bytes];
    } else {
        auto run = Gather<count / 2>(bytes, elements);
        run.Append(Gather<count - count / 2>(bytes + count / 2, elements));
        return run;
    }
}

/// Bits on their way to memory. The topmost of `bits`, as many as the lowest byte of `count` says, wait to be
/// written; what is below them does not matter, since it is never more than 56. Passed by value, so that it
/// stays in registers.
struct Sink {
    /// A flush leaves up to 7 bits.
    static constexpr unsigned kMostBitsBetweenFlushes = 56 - 7;

    std::uint8_t* out;
    std::uint64_t bits = 0;
    std::uint32_t count = 0;

    void Put(const Run& run) {
        bits = bits >> (run.count & 63) | run.bits;
        count += run.count;
    }

    /// Writes eight bytes, of which those that are full count.
    void Flush() {
        count &= 0xff;
        Store64(out, bits >> ((64 - count) & 63));
        out += count / 8;
        count %= 8;
    }
};

/// Writes one code for each byte, with a flush after every `perFlush` of them.
template <unsigned perFlush>
Sink PutBytes(Sink sink, std::span<const std::uint8_t> bytes, const Elements& elements) {
    std::size_t i = 0;
    for (; i + perFlush <= bytes.size(); i += perFlush) {
        sink.Put(Gather<perFlush>(&bytes[i], elements));
        sink.Flush();
    }
    for (; i < bytes.size(); ++i) {
        sink.Put(elements[bytes[i]]);
        sink.Flush();
    }
    return sink;
}

/// The codes of all pairs of bytes.
class PairTable {
  public:
    explicit PairTable(const Elements& elements) {
        for (std::size_t second = 0; second < elements.size(); ++second) {
            for (std::size_t first = 0; first < elements.size(); ++first)
                pairs_[first + 256 * second] = Join(elements[first], elements[second]);
        }
    }

    [[nodiscard]] Sink Put(Sink sink, std::span<const std::uint8_t> bytes, const Elements& elements) const {
        std::size_t i = 0;
        for (; i + 4 <= bytes.size(); i += 4) {
            const Element one = pairs_[Load16(bytes.data() + i)];
            const Element two = pairs_[Load16(bytes.data() + i + 2)];
            if (((one | two) & kTooLong) != 0) [[unlikely]] {
                sink = PutBytes<1>(sink, bytes.subspan(i, 4), elements);
                continue;
            }
            Run run = one;
            run.Append(two);
            sink.Put(run);
            sink.Flush();
        }
        return PutBytes<1>(sink, bytes.subspan(i), elements);
    }

  private:
    /// Two pairs go between two flushes.
    static constexpr unsigned kMostBits = Sink::kMostBitsBetweenFlushes / 2;
    /// In place of the number of bits of a pair that has more.
    static constexpr Element kTooLong = 0x80;

    static Element Join(Element first, Element second) {
        const unsigned count = CountOf(first) + CountOf(second);
        if (first == 0 || second == 0 || count > kMostBits) return kTooLong;
        return MakeElement(CodeOf(first) | CodeOf(second) << CountOf(first), count);
    }

    std::array<Element, 65536> pairs_;
};

/// The data area while it is filled, in whichever way is the fastest for codes like these.
class Area {
  public:
    Area(const Elements& elements, std::size_t sourceLength, std::span<std::uint8_t> data)
        : elements_(elements), end_(data.data() + data.size()), sink_{data.data()} {
        std::size_t values = 0;
        for (const Element element : elements) {
            longest_ = std::max(longest_, CountOf(element));
            values += element != 0 ? 1U : 0U;
        }
        // The table has to be paid for, and what is used of it should stay in a second-level cache.
        if (sourceLength > 65536 && values <= 160) pairs_ = std::make_unique<PairTable>(elements);
    }

    /// Writes the codes of as many of `bytes` as it can at a time, and returns their number.
    std::size_t Put(std::span<const std::uint8_t> bytes) {
        constexpr std::size_t kMost = 1 << 18;
        const auto left = static_cast<std::size_t>(end_ - sink_.out);
        const std::size_t safe = left > kSlack ? (left - kSlack) * 8 / longest_ : 0;
        if (safe < kFew) return PutFew(bytes.first(std::min(kFew, bytes.size())));
        const auto block = bytes.first(std::min({kMost, safe, bytes.size()}));
        sink_ = PutFast(block);
        return block.size();
    }

    void Finish() {
        if (sink_.count > 0) Append(std::array{static_cast<std::uint8_t>(sink_.bits >> (64 - sink_.count))});
        if (sink_.out != end_) Fail();
    }

  private:
    /// A flush writes eight bytes, however few are full.
    static constexpr std::size_t kSlack = 16;
    static constexpr std::size_t kFew = 64;

    [[noreturn]] static void Fail() { throw RangeError("The source has changed while it was encoded"); }

    [[nodiscard]] Sink PutFast(std::span<const std::uint8_t> bytes) const {
        constexpr unsigned kMost = Sink::kMostBitsBetweenFlushes;
        if (pairs_) return pairs_->Put(sink_, bytes, elements_);
        if (longest_ <= kMost / 5) return PutBytes<5>(sink_, bytes, elements_);
        if (longest_ <= kMost / 4) return PutBytes<4>(sink_, bytes, elements_);
        if (longest_ <= kMost / 3) return PutBytes<3>(sink_, bytes, elements_);
        if (longest_ <= kMost / 2) return PutBytes<2>(sink_, bytes, elements_);
        return PutBytes<1>(sink_, bytes, elements_);
    }

    /// Near the end of the area: what the codes take is known only once they are written, elsewhere.
    std::size_t PutFew(std::span<const std::uint8_t> bytes) {
        std::array<std::uint8_t, kFew * Sink::kMostBitsBetweenFlushes / 8 + kSlack> few{};
        const Sink sink = PutBytes<1>({few.data(), sink_.bits, sink_.count}, bytes, elements_);
        Append(std::span(few.data(), sink.out));
        sink_.bits = sink.bits;
        sink_.count = sink.count;
        return bytes.size();
    }

    void Append(std::span<const std::uint8_t> bytes) {
        if (std::ssize(bytes) > end_ - sink_.out) Fail();
        sink_.out = std::ranges::copy(bytes, sink_.out).out;
    }

    const Elements& elements_;
    const std::uint8_t* end_;
    Sink sink_;
    unsigned longest_ = 1;
    std::unique_ptr<const PairTable> pairs_;
};

}  // namespace

void WriteData(const ByteSource& source, const SymbolCodes& symbolCode, std::span<std::uint8_t> data,
               ProgressMeter& progress) {
    const Elements elements = MakeElements(symbolCode);
    Area area(elements, source.size, data);
    ProgressPass pass(progress, 10000, source.size, 88, 5 + 7);
    for (std::size_t done = 0; done < source.size;) {
        for (auto bytes = source.from(done); !bytes.empty();) {
            const std::size_t put = area.Put(bytes);
            bytes = bytes.subspan(put);
            done += put;
            pass.Until(done);
        }
    }
    area.Finish();
}

}  // namespace vento::codec
