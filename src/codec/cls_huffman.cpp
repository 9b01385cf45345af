#include "codec/cls_huffman.h"

#include <filesystem>
#include <limits>
#include <system_error>

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

}  // namespace

std::vector<std::uint8_t> clsHuffman::EncodeFile(const std::string& sourceFile) const {
    if (!FileExists(sourceFile)) throw RaisedError("clsHuffman.EncodeFile()", "Source file does not exist");
    auto bytes = ReadBytes(PathFromUtf8(sourceFile));
    Encode(bytes, nullptr);
    return bytes;
}

void clsHuffman::EncodeFile(const std::string& sourceFile, const std::string& destFile) const {
    ReplaceFile(PathFromUtf8(destFile), EncodeFile(sourceFile));
}

bool clsHuffman::DecodeFile(const std::string& sourceFile, std::vector<std::uint8_t>& byteArray,
                            const std::optional<std::string>& destFile) const {
    byteArray = ReadBytes(PathFromUtf8(sourceFile));
    const bool uncoded = Decode(byteArray, nullptr);
    if (destFile) ReplaceFile(PathFromUtf8(*destFile), byteArray);
    return uncoded;
}

std::string clsHuffman::DecodeString(const std::string& text, KeyArray* codeCript) const {
    auto bytes = Windows1252FromUtf8(text);
    Decode(bytes, codeCript);
    return Utf8FromWindows1252(bytes);
}

std::string clsHuffman::EncodeString(const std::string& text, const KeyArray* codeCript) const {
    auto bytes = Windows1252FromUtf8(text);
    Encode(bytes, codeCript);
    return Utf8FromWindows1252(bytes);
}

void clsHuffman::Encode(std::vector<std::uint8_t>& byteArray, const KeyArray* codeCript) const {
    NeedLength32(byteArray.size());
    ProgressMeter progress(Progress);
    std::vector<std::uint8_t> container;
    const bool coded = codec::Encode(byteArray, codeCript, progress, container);
    byteArray.swap(container);
    if (coded) progress.Finish();
}

bool clsHuffman::Decode(std::vector<std::uint8_t>& byteArray, KeyArray* codeCript) const {
    NeedLength32(byteArray.size());
    switch (FormOf(byteArray)) {
        case Form::foreign:
            return true;
        case Form::stored:
            byteArray.erase(byteArray.begin(), byteArray.begin() + kFormSize);
            return true;
        case Form::coded:
            break;
    }
    ProgressMeter progress(Progress);
    std::vector<std::uint8_t> decoded;
    if (DecodeCoded(byteArray, codeCript, progress, decoded)) {
        byteArray.swap(decoded);
        progress.Finish();
    }
    return false;
}

bool clsHuffman::FileExists(const std::string& path) {
    std::error_code failed;
    static_cast<void>(std::filesystem::file_size(PathFromUtf8(path), failed));
    return !failed;
}

}  // namespace vento::codec
