#include "codec/container.h"

#include <algorithm>
#include <bitset>
#include <optional>
#include <string>

namespace vento::codec {
namespace {

/// The bytes of a container, in order. Each read beyond the end is a range error that says what was wanted.
class Reader {
  public:
    Reader(std::span<const std::uint8_t> bytes, std::size_t offset) : bytes_(bytes), offset_(offset) {}

    std::uint8_t Byte(const char* what) {
        Need(1, what);
        return bytes_[offset_++];
    }

    std::span<const std::uint8_t> Bytes(std::size_t count, const char* what) {
        Need(count, what);
        offset_ += count;
        return bytes_.subspan(offset_ - count, count);
    }

    [[nodiscard]] std::size_t Offset() const { return offset_; }

  private:
    void Need(std::size_t count, const char* what) const {
        if (offset_ <= bytes_.size() && count <= bytes_.size() - offset_) return;
        throw RangeError("The container ends at offset " + std::to_string(bytes_.size()) + ", within its " +
                         what);
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t offset_;
};

std::uint32_t Number(std::span<const std::uint8_t> bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        number |= std::uint32_t{bytes[i]} << 8 * i;
    return number;
}

void CopyKeyBlock(Reader& reader, KeyArray& codeCript) {
    if (codeCript.size() < kKeyBlockRows)
        throw RangeError("The key has " + std::to_string(codeCript.size()) + " rows, and needs 12 at least");
    const auto block = reader.Bytes(kKeyBlockSize, "key block");
    for (std::size_t i = 0; i < kKeyBlockSize; ++i)
        codeCript[i % kKeyBlockRows][i / kKeyBlockRows] = block[i];
}

/// `sum` without what the key has added to it, if that is the number of a byte.
std::optional<std::uint8_t> WithoutKey(std::uint8_t sum, std::int64_t key) {
    if (key > sum || key < sum - 255) return std::nullopt;
    return static_cast<std::uint8_t>(sum - key);
}

std::string Place(std::int64_t pair) {
    return " (pair " + std::to_string(pair) + " of the symbol table)";
}

using CodeLengths = std::array<std::uint8_t, 256>;

CodeLengths ReadSymbolTable(Reader& reader, std::int64_t pairs, const KeyArray* codeCript) {
    CodeLengths lengths{};
    for (std::int64_t k = 0; k < pairs; ++k) {
        std::array<std::int64_t, 2> key{};
        if (codeCript) {
            if (k >= std::ssize(*codeCript)) throw RangeError("The key has no row for a symbol" + Place(k));
            key = (*codeCript)[static_cast<std::size_t>(k)];
        }
        const auto symbol = WithoutKey(reader.Byte("symbol table"), key[0]);
        if (!symbol) throw RangeError("Without its key a symbol is not a byte" + Place(k));
        const auto length = WithoutKey(reader.Byte("symbol table"), key[1]);
        if (!length) throw OverflowError("Without its key a code length is not a byte" + Place(k));
        lengths[*symbol] = *length;
    }
    return lengths;
}

void ReadCodes(Reader& reader, const CodeLengths& lengths, CodeTree& codeTree) {
    std::int32_t nodeCount = 1;
    std::uint64_t bits = 0;  // read and not yet used, and how many
    unsigned count = 0;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] == 0) continue;
        CodeBits code{lengths[symbol], {}};
        for (unsigned done = 0; done < code.Count;) {
            const unsigned part = std::min(code.Count - done, 32U);
            for (; count < part; count += 8)
                bits |= std::uint64_t{reader.Byte("code area")} << count;
            code.Data |= std::bitset<256>(bits & ((std::uint64_t{1} << part) - 1)) << done;
            bits >>= part;
            count -= part;
            done += part;
        }
        InsertCode(codeTree, nodeCount, static_cast<std::int32_t>(symbol), code);
    }
}

unsigned Shortest(const CodeLengths& lengths) {
    unsigned shortest = 0;
    for (const unsigned length : lengths) {
        if (length != 0 && (shortest == 0 || length < shortest)) shortest = length;
    }
    return shortest;
}

}  // namespace

Form FormOf(std::span<const std::uint8_t> container) {
    if (container.size() < kFormSize) {
        throw RangeError("The data are " + std::to_string(container.size()) +
                         " bytes long, and need 4 at least");
    }
    const bool ours =
        container[0] == kCodedForm[0] && container[1] == kCodedForm[1] && container[3] == kCodedForm[3];
    if (!ours) return Form::foreign;
    if (container[2] == kStoredForm[2]) return Form::stored;
    if (container[2] == kCodedForm[2]) return Form::coded;
    throw RaisedError(
        "HuffmanDecode()",
        "The data either was not compressed with HE3 or is corrupt (identification string not found)");
}

std::size_t SourceLengthOf(std::span<const std::uint8_t> container) {
    Reader reader(container, kChecksumOffset);
    reader.Byte("checksum");
    const auto length = static_cast<std::int32_t>(Number(reader.Bytes(4, "source length")));
    if (length < 0) throw RangeError("The source length is negative: " + std::to_string(length));
    return static_cast<std::size_t>(length);
}

CodedHeader ReadHeader(std::span<const std::uint8_t> container, KeyArray* codeCript) {
    CodedHeader header;
    header.sourceLength = SourceLengthOf(container);
    header.checksum = container[kChecksumOffset];
    if (header.sourceLength == 0) return header;

    Reader reader(container, kTableCountOffset);
    std::int64_t pairs = static_cast<std::int16_t>(Number(reader.Bytes(2, "table count")));
    if (codeCript) {
        pairs -= 2 * std::ssize(*codeCript);
        CopyKeyBlock(reader, *codeCript);
    }
    header.codeLengths = ReadSymbolTable(reader, pairs, codeCript);
    header.shortestCode = Shortest(header.codeLengths);
    ReadCodes(reader, header.codeLengths, header.codeTree);
    header.dataOffset = reader.Offset();
    return header;
}

}  // namespace vento::codec
