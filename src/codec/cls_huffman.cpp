#include "codec/cls_huffman.h"

#include <algorithm>
#include <limits>

#include "codec/container.h"
#include "codec/decoder.h"
#include "codec/encoder.h"
#include "codec/file_bytes.h"
#include "codec/progress_meter.h"
#include "text/encoding.h"

namespace vento::codec {
namespace {

void NeedLength32(std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw OverflowError("The data are " + std::to_string(length) +
                            " bytes long, and 2147483647 is the most");
    }
}

/// Does `work`; memory that there is not enough of is told by its own error.
auto WithinMemory(const auto& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        throw MemoryError();
    } catch (const std::length_error&) {
        throw MemoryError();
    }
}

void Encode(const ByteSource& source, const KeyArray* codeCript, ProgressMeter progress,
            const RoomFor& room) {
    NeedLength32(source.size);
    if (codec::Encode(source, codeCript, progress, room)) progress.Finish();
}

std::vector<std::uint8_t> EncodeToVector(const ByteSource& source, const KeyArray* codeCript,
                                         const ProgressMeter& progress) {
    std::vector<std::uint8_t> container;
    Encode(source, codeCript, progress, [&](std::size_t size) {
        container.resize(size);
        return std::span(container);
    });
    return container;
}

void Copy(const ByteSource& source, std::size_t offset, const ByteSink& to) {
    to.reserve(source.size - offset);
    while (offset < source.size) {
        const auto bytes = source.from(offset);
        to.append(bytes);
        offset += bytes.size();
    }
}

/// True if the bytes were not Huffman-coded.
bool Decode(const ByteSource& source, KeyArray* codeCript, ProgressMeter progress, const ByteSink& decoded) {
    NeedLength32(source.size);
    const Form form = FormOf(source.from(0));
    if (form == Form::coded) {
        if (DecodeCoded(source, codeCript, progress, decoded)) {
            progress.Finish();
        } else {
            Copy(source, 0, decoded);
        }
        return false;
    }
    Copy(source, form == Form::stored ? kFormSize : 0, decoded);
    return true;
}

bool DecodeToVector(const ByteSource& source, KeyArray* codeCript, const ProgressMeter& progress,
                    std::vector<std::uint8_t>& decoded) {
    const auto append = [&](std::span<const std::uint8_t> bytes) {
        decoded.insert(decoded.end(), bytes.begin(), bytes.end());
    };
    return Decode(source, codeCript, progress, {[&](std::size_t most) { decoded.reserve(most); }, append});
}

ContainerInfo InfoOf(const ByteSource& source, const KeyArray* codeCript) {
    NeedLength32(source.size);
    const auto head = source.from(0);
    ContainerInfo info{.form = FormOf(head), .containerSize = source.size, .sourceLength = source.size};
    if (info.form == Form::stored) info.sourceLength -= kFormSize;
    if (info.form != Form::coded) return info;
    std::optional<KeyArray> key;
    if (codeCript) key = *codeCript;
    const CodedHeader header = ReadHeader(head, key ? &*key : nullptr);
    info.sourceLength = header.sourceLength;
    info.checksum = header.checksum;
    info.shortestCode = header.shortestCode;
    info.longestCode = *std::ranges::max_element(header.codeLengths);
    info.symbols = static_cast<unsigned>(256 - std::ranges::count(header.codeLengths, 0));
    info.dataOffset = header.dataOffset;
    return info;
}

}  // namespace

std::vector<std::uint8_t> clsHuffman::EncodeFile(const std::string& sourceFile) const {
    if (!FileExists(sourceFile)) throw RaisedError("clsHuffman.EncodeFile()", "Source file does not exist");
    return WithinMemory([&] {
        FileReader source(PathOf(sourceFile));
        return EncodeToVector(source.Source(), nullptr, ProgressMeter(Progress));
    });
}

void clsHuffman::EncodeFile(const std::string& sourceFile, const std::string& destFile) const {
    const auto dest = PathOf(destFile);
    ReplaceFile(dest, EncodeFile(sourceFile));
}

bool clsHuffman::DecodeFile(const std::string& sourceFile, std::vector<std::uint8_t>& byteArray,
                            const std::optional<std::string>& destFile) const {
    return WithinMemory([&] {
        const auto path = PathOf(sourceFile);
        const auto dest = destFile ? std::optional(PathOf(*destFile)) : std::nullopt;
        bool uncoded = false;
        std::vector<std::uint8_t> decoded;
        try {
            uncoded = DecodeToVector(FileReader(path).Source(), nullptr, ProgressMeter(Progress), decoded);
        } catch (const std::filesystem::filesystem_error&) {
            throw;
        } catch (...) {
            decoded = {};
            byteArray = ReadBytes(path);
            throw;
        }
        byteArray.swap(decoded);
        if (dest) ReplaceFile(*dest, byteArray);
        return uncoded;
    });
}

std::string clsHuffman::DecodeString(const std::string& text, KeyArray* codeCript) const {
    return WithinMemory(
        [&] { return Utf8FromWindows1252(DecodeBytes(Windows1252FromUtf8(text), codeCript).bytes); });
}

std::string clsHuffman::EncodeString(const std::string& text, const KeyArray* codeCript) const {
    return WithinMemory(
        [&] { return Utf8FromWindows1252(EncodeBytes(Windows1252FromUtf8(text), codeCript)); });
}

std::vector<std::uint8_t> clsHuffman::EncodeBytes(std::span<const std::uint8_t> source,
                                                  const KeyArray* codeCript) const {
    return WithinMemory([&] { return EncodeToVector(SourceOf(source), codeCript, ProgressMeter(Progress)); });
}

std::size_t clsHuffman::EncodeBytes(std::span<const std::uint8_t> source, std::span<std::uint8_t> container,
                                    const KeyArray* codeCript) const {
    return WithinMemory([&] {
        std::size_t written = 0;
        Encode(SourceOf(source), codeCript, ProgressMeter(Progress), [&](std::size_t size) {
            if (size > container.size()) {
                throw RangeError("The container takes " + std::to_string(size) +
                                 " bytes, and there is room for " + std::to_string(container.size()));
            }
            written = size;
            return container.first(size);
        });
        return written;
    });
}

std::size_t clsHuffman::EncodeBound(std::size_t sourceLength) {
    // No code is longer than one less than the number of symbols, nor than 49 bits: for that a source would
    // have to be longer than 32 bits can tell.
    const std::size_t symbols = std::min<std::size_t>(sourceLength, 256);
    const std::size_t longestCode = std::min<std::size_t>(symbols, 49);
    return kTableOffset + kKeyBlockSize + 2 * symbols + (symbols * longestCode + 7) / 8 + sourceLength;
}

Decoded clsHuffman::DecodeBytes(std::span<const std::uint8_t> container, KeyArray* codeCript) const {
    return WithinMemory([&] {
        Decoded decoded;
        decoded.uncoded =
            DecodeToVector(SourceOf(container), codeCript, ProgressMeter(Progress), decoded.bytes);
        return decoded;
    });
}

DecodedSize clsHuffman::DecodeBytes(std::span<const std::uint8_t> container, std::span<std::uint8_t> decoded,
                                    KeyArray* codeCript) const {
    return WithinMemory([&] {
        DecodedSize result;
        const auto append = [&](std::span<const std::uint8_t> bytes) {
            if (bytes.size() > decoded.size() - result.size) {
                throw RangeError("What is decoded takes more than the " + std::to_string(decoded.size()) +
                                 " bytes that there is room for");
            }
            std::ranges::copy(bytes, decoded.subspan(result.size).begin());
            result.size += bytes.size();
        };
        result.uncoded =
            Decode(SourceOf(container), codeCript, ProgressMeter(Progress), {[](std::size_t) {}, append});
        return result;
    });
}

std::size_t clsHuffman::DecodeBound(std::span<const std::uint8_t> container) {
    NeedLength32(container.size());
    switch (FormOf(container)) {
        case Form::foreign:
            return container.size();
        case Form::stored:
            return container.size() - kFormSize;
        case Form::coded:
            break;
    }
    const std::size_t length = SourceLengthOf(container);
    if (length == 0) return container.size();
    return static_cast<std::size_t>(std::min<std::uint64_t>(length, 8 * std::uint64_t{container.size()}));
}

ContainerInfo clsHuffman::Info(std::span<const std::uint8_t> container, const KeyArray* codeCript) {
    return WithinMemory([&] { return InfoOf(SourceOf(container), codeCript); });
}

ContainerInfo clsHuffman::FileInfo(const std::string& file, const KeyArray* codeCript) {
    return WithinMemory([&] { return InfoOf(FileReader(PathOf(file)).Source(), codeCript); });
}

}  // namespace vento::codec
