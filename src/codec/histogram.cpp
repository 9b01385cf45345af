#include "codec/histogram.h"

#include <array>
#include <cstddef>

#include "codec/little_endian.h"

namespace vento::codec {
namespace {

/// Four tables of counters, so that a run of one value does not wait for its own counter.
class Counters {
  public:
    void Add(std::span<const std::uint8_t> bytes) {
        std::size_t i = 0;
        for (; i + 8 <= bytes.size(); i += 8) {
            std::uint64_t word = Load64(bytes.data() + i);
            for (std::size_t k = 0; k < 8; ++k, word >>= 8)
                ++tables_[k % 4][word & 0xff];
        }
        for (; i < bytes.size(); ++i)
            ++tables_[0][bytes[i]];
    }

    [[nodiscard]] SymbolCounts Sum() const {
        SymbolCounts sum{};
        for (std::size_t value = 0; value < sum.size(); ++value) {
            sum[value] = static_cast<std::int32_t>(tables_[0][value] + tables_[1][value] + tables_[2][value] +
                                                   tables_[3][value]);
        }
        return sum;
    }

  private:
    std::array<std::array<std::uint32_t, 256>, 4> tables_{};
};

constexpr std::size_t kBlockSize = 1 << 18;

}  // namespace

SymbolCounts CountSymbols(std::span<const std::uint8_t> source, ProgressMeter& progress) {
    Counters counters;
    ProgressPass pass(progress, 1000, source.size(), 7, 0);
    for (std::size_t done = 0; done < source.size();) {
        const std::size_t block = std::min(kBlockSize, source.size() - done);
        counters.Add(source.subspan(done, block));
        done += block;
        pass.Until(done);
    }
    return counters.Sum();
}

std::uint8_t ChecksumOf(const SymbolCounts& symbolCount) {
    unsigned checksum = 0;
    for (std::size_t value = 0; value < symbolCount.size(); ++value)
        checksum ^= (static_cast<unsigned>(symbolCount[value]) & 1) * static_cast<unsigned>(value);
    return static_cast<std::uint8_t>(checksum);
}

}  // namespace vento::codec
