#include "codec/encoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string>

#include "codec/code_tree.h"
#include "codec/container.h"
#include "codec/data_writer.h"
#include "codec/histogram.h"

namespace vento::codec {
namespace {

constexpr std::int64_t kMostBits = std::numeric_limits<std::int32_t>::max();

SymbolCodes CodesFor(const SymbolCounts& symbolCount) {
    CodeTree codeTree;
    SymbolCodes symbolCode;
    const auto nodes = BuildTree(symbolCount, codeTree);
    AssignCodes(codeTree, static_cast<std::int16_t>(nodes - 1), CodeBits{}, symbolCode);
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

void MakeStored(std::span<const std::uint8_t> source, std::vector<std::uint8_t>& container) {
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    if (source.size() > kMost - kFormSize)
        throw OverflowError("The container would be longer than 2147483647 bytes");
    container.resize(kFormSize + source.size());
    std::ranges::copy(kStoredForm, container.begin());
    std::ranges::copy(source, container.begin() + kFormSize);
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
            if (k == kMostKeyedPairs) throw RangeError("With a key a container holds at kMost 244 symbols");
            pair[1] = WithKey(pair[1], *codeCript, k, 1);
        }
        head.insert(head.end(), pair.begin(), pair.end());
        ++k;
    }
}

void AppendCodes(std::vector<std::uint8_t>& head, const SymbolCodes& symbolCode) {
    unsigned byte = 0;
    unsigned position = 0;
    for (const CodeBits& code : symbolCode) {
        for (std::size_t j = 0; j < code.Count; ++j) {
            byte |= (code.Data[j] ? 1U : 0U) << position;
            if (++position < 8) continue;
            head.push_back(static_cast<std::uint8_t>(byte));
            byte = position = 0;
        }
    }
    if (position > 0) head.push_back(static_cast<std::uint8_t>(byte));
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

}  // namespace

bool Encode(std::span<const std::uint8_t> source, const KeyArray* codeCript, ProgressMeter& progress,
            std::vector<std::uint8_t>& container) {
    if (source.empty()) {
        MakeStored(source, container);
        return false;
    }
    const auto symbolCount = CountSymbols(source, progress);
    const auto symbolCode = CodesFor(symbolCount);
    const auto codedSize = static_cast<std::size_t>((DataBits(symbolCount, symbolCode) + 7) / 8);
    if (codedSize > source.size() || codedSize == 0) {
        MakeStored(source, container);
        return false;
    }
    ProgressPass(progress, 10000, source.size(), 5, 7).Until(source.size());
    const auto head = Head(ChecksumOf(symbolCount), source.size(), symbolCode, codeCript);
    container.resize(head.size() + codedSize);
    std::ranges::copy(head, container.begin());
    WriteData(source, symbolCode, std::span(container).subspan(head.size()), progress);
    return true;
}

}  // namespace vento::codec
