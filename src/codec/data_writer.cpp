#include "codec/data_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>

#include "codec/little_endian.h"

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
        std::uint64_t bits = 0;
        for (std::size_t j = 0; j < code.Count; ++j)
            bits |= std::uint64_t{code.Data[j] ? 1U : 0U} << j;
        if (code.Count > 0) elements[value] = MakeElement(bits, code.Count);
    }
    return elements;
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

    /// The shift looks at the lowest six bits of the element alone, and the sum is right in its lowest byte.
    void Put(Element element) {
        bits = bits >> (element & 63) | element;
        count += static_cast<std::uint32_t>(element);
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
        for (unsigned k = 0; k < perFlush; ++k)
            sink.Put(elements[bytes[i + k]]);
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
    explicit PairTable(const Elements& elements) : pairs_(std::make_unique_for_overwrite<Element[]>(65536)) {
        for (std::size_t second = 0; second < elements.size(); ++second) {
            if (elements[second] == 0) continue;
            for (std::size_t first = 0; first < elements.size(); ++first)
                pairs_[first + 256 * second] = Join(elements[first], elements[second]);
        }
    }

    [[nodiscard]] Sink Put(Sink sink, std::span<const std::uint8_t> bytes, const Elements& elements) const {
        const Element* const pairs = pairs_.get();
        std::size_t i = 0;
        for (; i + 4 <= bytes.size(); i += 4) {
            const Element one = pairs[Load16(bytes.data() + i)];
            const Element two = pairs[Load16(bytes.data() + i + 2)];
            if (((one | two) & kTooLong) != 0) [[unlikely]] {
                sink = PutBytes<1>(sink, bytes.subspan(i, 4), elements);
                continue;
            }
            sink.Put(one);
            sink.Put(two);
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
        if (first == 0 || count > kMostBits) return kTooLong;
        return MakeElement(CodeOf(first) | CodeOf(second) << CountOf(first), count);
    }

    std::unique_ptr<Element[]> pairs_;
};

/// The fastest way to write codes like these.
class Writer {
  public:
    Writer(const Elements& elements, std::size_t sourceLength) : elements_(elements) {
        std::size_t values = 0;
        for (const Element element : elements) {
            longest_ = std::max(longest_, CountOf(element));
            values += element != 0 ? 1U : 0U;
        }
        // The table has to be paid for, and what is used of it should stay in a second-level cache.
        if (sourceLength > 65536 && values <= 160) pairs_.emplace(elements);
    }

    [[nodiscard]] Sink Put(Sink sink, std::span<const std::uint8_t> bytes) const {
        constexpr unsigned kMost = Sink::kMostBitsBetweenFlushes;
        if (pairs_) return pairs_->Put(sink, bytes, elements_);
        if (longest_ <= kMost / 4) return PutBytes<4>(sink, bytes, elements_);
        if (longest_ <= kMost / 3) return PutBytes<3>(sink, bytes, elements_);
        if (longest_ <= kMost / 2) return PutBytes<2>(sink, bytes, elements_);
        return PutBytes<1>(sink, bytes, elements_);
    }

  private:
    const Elements& elements_;
    unsigned longest_ = 0;
    std::optional<PairTable> pairs_;
};

constexpr std::size_t kBlockSize = 1 << 18;
/// The codes of so many bytes take eight bytes at least, which is what a flush writes.
constexpr std::size_t kTailSize = 64;

}  // namespace

void WriteData(std::span<const std::uint8_t> source, const SymbolCodes& symbolCode,
               std::span<std::uint8_t> data, ProgressMeter& progress) {
    const Elements elements = MakeElements(symbolCode);
    const Writer writer(elements, source.size());
    ProgressPass pass(progress, 10000, source.size(), 88, 5 + 7);
    Sink sink{data.data()};
    const std::size_t bodySize = source.size() - std::min(source.size(), kTailSize);
    for (std::size_t done = 0; done < bodySize;) {
        const auto block = source.subspan(done, std::min(kBlockSize, bodySize - done));
        sink = writer.Put(sink, block);
        done += block.size();
        pass.Until(done);
    }
    // No flush may write beyond the end: the last codes go elsewhere first.
    std::array<std::uint8_t, kTailSize * Sink::kMostBitsBetweenFlushes / 8 + 16> tail{};
    const auto written = sink.out - data.data();
    static_cast<void>(PutBytes<1>({tail.data(), sink.bits, sink.count}, source.subspan(bodySize), elements));
    std::copy_n(tail.begin(), std::ssize(data) - written, data.begin() + written);
    pass.Until(source.size());
}

}  // namespace vento::codec
