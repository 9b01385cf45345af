#include "codec/encoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "codec/container.h"

namespace vento::codec {
namespace {

constexpr std::int64_t kMostBits = std::numeric_limits<std::int32_t>::max();

/// Counts bytes, in four tables, so that a run of one value does not wait for its own counter. Once there
/// have been many it counts two at a time, which takes half the stores, unless one value is so frequent that
/// its pair would have to wait.
class Counters {
  public:
    void Add(std::span<const std::uint8_t> bytes) {
        if (pairs_.empty() && counted_ >= kMany) {
            const auto most = static_cast<std::size_t>(std::ranges::max(Sum()));
            if (most < counted_ / 2) pairs_.resize(65536);
        }
        counted_ += bytes.size();
        const auto words = bytes.first(bytes.size() / 8 * 8);
        if (pairs_.empty()) {
            AddBytes(words);
        } else {
            AddPairs(words);
        }
        for (const std::uint8_t byte : bytes.subspan(words.size()))
            ++tables_[0][byte];
    }

    [[nodiscard]] SymbolCounts Sum() const {
        std::array<std::uint32_t, 256> sum{};
        for (const auto& table : tables_) {
            for (std::size_t value = 0; value < sum.size(); ++value)
                sum[value] += table[value];
        }
        for (std::size_t pair = 0; pair < pairs_.size(); ++pair) {
            sum[pair % 256] += pairs_[pair];
            sum[pair / 256] += pairs_[pair];
        }
        SymbolCounts counts{};
        std::ranges::transform(sum, counts.begin(),
                               [](std::uint32_t count) { return static_cast<std::int32_t>(count); });
        return counts;
    }

  private:
    static constexpr std::size_t kMany = 1 << 18;

    void AddBytes(std::span<const std::uint8_t> words) {
        for (std::size_t i = 0; i < words.size(); i += 8) {
            std::uint64_t word = Load64(&words[i]);
            for (std::size_t k = 0; k < 8; ++k, word >>= 8)
                ++tables_[k % 4][word & 0xff];
        }
    }

    void AddPairs(std::span<const std::uint8_t> words) {
        std::uint32_t* const pairs = pairs_.data();
        for (std::size_t i = 0; i < words.size(); i += 8) {
            std::uint64_t word = Load64(&words[i]);
            for (std::size_t k = 0; k < 4; ++k, word >>= 16)
                ++pairs[word & 0xffff];
        }
    }

    std::size_t counted_ = 0;
    std::array<std::array<std::uint32_t, 256>, 4> tables_{};
    std::vector<std::uint32_t> pairs_;
};

/// How often each byte value occurs. Reports 7 per cent, one test in 1000 bytes.
SymbolCounts CountSymbols(const ByteSource& source, ProgressMeter& progress) {
    constexpr std::size_t kBlockSize = 1 << 18;
    Counters counters;
    ProgressPass pass(progress, 1000, source.size, 7, 0);
    for (std::size_t done = 0; done < source.size;) {
        const auto bytes = source.from(done);
        const auto block = bytes.first(std::min(kBlockSize, bytes.size()));
        counters.Add(block);
        done += block.size();
        pass.Until(done);
    }
    return counters.Sum();
}

/// The exclusive or of all bytes, which is that of the values that occur an odd number of times.
std::uint8_t ChecksumOf(const SymbolCounts& symbolCount) {
    unsigned checksum = 0;
    for (std::size_t value = 0; value < symbolCount.size(); ++value)
        checksum ^= (static_cast<unsigned>(symbolCount[value]) & 1) * static_cast<unsigned>(value);
    return static_cast<std::uint8_t>(checksum);
}

SymbolCodes CodesFor(const SymbolCounts& symbolCount) {
    CodeTree codeTree;
    SymbolCodes symbolCode;
    const auto nodes = BuildTree(symbolCount, codeTree);
    CodeBits path;
    AssignCodes(codeTree, static_cast<std::int16_t>(nodes - 1), path, symbolCode);
    return symbolCode;
}

/// The length of the data area in bits.
std::int64_t DataBits(const SymbolCounts& symbolCount, const SymbolCodes& symbolCode) {
    std::int64_t bits = 0;
    for (std::size_t value = 0; value < symbolCount.size(); ++value)
        bits += std::int64_t{symbolCount[value]} * symbolCode[value].Count;
    if (bits > kMostBits) {
        throw OverflowError("The coded data would be " + std::to_string(bits) +
                            " bits long, and 2147483647 is the most");
    }
    return bits;
}

void MakeStored(const ByteSource& source, const RoomFor& room) {
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    if (source.size > kMost - kFormSize)
        throw OverflowError("The container would be longer than 2147483647 bytes");
    const auto container = room(kFormSize + source.size);
    std::ranges::copy(kStoredForm, container.begin());
    for (std::size_t done = 0; done < source.size;) {
        const auto bytes = source.from(done);
        std::ranges::copy(bytes, container.subspan(kFormSize + done).begin());
        done += bytes.size();
    }
}

void AppendNumber(std::vector<std::uint8_t>& to, std::uint64_t number, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        to.push_back(static_cast<std::uint8_t>(number >> 8 * i));
}

/// What `value` and the element of the key add up to, as a byte of the container.
std::uint8_t WithKey(std::uint8_t value, const KeyArray& codeCript, std::size_t row, std::size_t column) {
    if (row >= codeCript.size()) {
        throw RangeError("The key has " + std::to_string(codeCript.size()) + " rows, and row " +
                         std::to_string(row) + " is needed");
    }
    const std::int64_t element = codeCript[row][column];
    if (element < 0 || element > 255 - value) {
        throw OverflowError("Row " + std::to_string(row) + " of the key: " + std::to_string(element) +
                            " added to " + std::to_string(value) + " does not make a byte");
    }
    return static_cast<std::uint8_t>(value + element);
}

void AppendSymbolTable(std::vector<std::uint8_t>& head, const SymbolCodes& symbolCode,
                       const KeyArray* codeCript) {
    constexpr std::size_t kMostKeyedPairs = 256 - kKeyBlockRows;
    for (std::size_t i = 0; codeCript && i < kKeyBlockSize; ++i)
        head.push_back(WithKey(0, *codeCript, i % kKeyBlockRows, i / kKeyBlockRows));
    std::size_t k = 0;
    for (std::size_t value = 0; value < symbolCode.size(); ++value) {
        std::array pair = {static_cast<std::uint8_t>(value), symbolCode[value].Count};
        if (pair[1] == 0) continue;
        if (codeCript) {
            pair[0] = WithKey(pair[0], *codeCript, k, 0);
            if (k == kMostKeyedPairs) throw RangeError("With a key a container holds at most 244 symbols");
            pair[1] = WithKey(pair[1], *codeCript, k, 1);
        }
        head.insert(head.end(), pair.begin(), pair.end());
        ++k;
    }
}

void AppendCodes(std::vector<std::uint8_t>& head, const SymbolCodes& symbolCode) {
    std::uint64_t bits = 0;
    unsigned count = 0;
    for (const CodeBits& code : symbolCode) {
        bits |= code.Data.to_ullong() << count;
        for (count += code.Count; count >= 8; count -= 8, bits >>= 8)
            head.push_back(static_cast<std::uint8_t>(bits));
    }
    if (count > 0) head.push_back(static_cast<std::uint8_t>(bits));
}

/// All that stands before the data area.
std::vector<std::uint8_t> Head(std::uint8_t checksum, std::size_t sourceLength, const SymbolCodes& symbolCode,
                               const KeyArray* codeCript) {
    const auto symbols =
        std::ranges::count_if(symbolCode, [](const CodeBits& code) { return code.Count > 0; });
    const std::size_t keyRows = codeCript ? codeCript->size() : 0;
    const std::size_t tableCount = static_cast<std::size_t>(symbols) + 2 * keyRows;
    if (tableCount > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max()))
        throw OverflowError("A key of " + std::to_string(keyRows) + " rows is too long for the table count");
    std::vector<std::uint8_t> head(kCodedForm.begin(), kCodedForm.end());
    head.reserve(2048);
    head.push_back(checksum);
    AppendNumber(head, sourceLength, 4);
    AppendNumber(head, tableCount, 2);
    AppendSymbolTable(head, symbolCode, codeCript);
    AppendCodes(head, symbolCode);
    return head;
}

/// Writes the data area. What comes in pieces is counted again: between the two times that it is read a file
/// may be written to.
void WriteCounted(const ByteSource& source, const SymbolCounts& symbolCount, const SymbolCodes& symbolCode,
                  std::span<std::uint8_t> data, ProgressMeter& progress) {
    if (source.from(0).size() == source.size) {
        WriteData(source, symbolCode, data, progress);
        return;
    }
    Counters counters;
    const auto counted = [&](std::size_t offset) {
        const auto bytes = source.from(offset);
        counters.Add(bytes);
        return bytes;
    };
    WriteData({source.size, counted}, symbolCode, data, progress);
    if (counters.Sum() != symbolCount) throw RangeError("The source has changed while it was encoded");
}

}  // namespace

bool Encode(const ByteSource& source, const KeyArray* codeCript, ProgressMeter& progress,
            const RoomFor& room) {
    if (source.size == 0) {
        MakeStored(source, room);
        return false;
    }
    const auto symbolCount = CountSymbols(source, progress);
    const auto symbolCode = CodesFor(symbolCount);
    const auto codedSize = static_cast<std::size_t>((DataBits(symbolCount, symbolCode) + 7) / 8);
    if (codedSize > source.size || codedSize == 0) {
        MakeStored(source, room);
        return false;
    }
    ProgressPass(progress, 10000, source.size, 5, 7).Until(source.size);
    const auto head = Head(ChecksumOf(symbolCount), source.size, symbolCode, codeCript);
    const auto container = room(head.size() + codedSize);
    std::ranges::copy(head, container.begin());
    WriteCounted(source, symbolCount, symbolCode, container.subspan(head.size()), progress);
    return true;
}

}  // namespace vento::codec
