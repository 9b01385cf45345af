#include "codec/file_bytes.h"

#include <algorithm>
#include <cerrno>
#include <ios>
#include <limits>
#include <system_error>

#include "codec/cls_huffman.h"
#include "text/encoding.h"

namespace vento::codec {
namespace {

namespace fs = std::filesystem;

/// Larger files are not read at once.
constexpr std::size_t kPieceSize = 8 << 20;
static_assert(kPieceSize >= 2 * ByteSource::kLeastPiece);

/// Throws what the system said about the last call that failed, or an input/output error if it said nothing.
[[noreturn]] void Fail(const char* what, const fs::path& path) {
    const int reason = errno != 0 ? errno : EIO;
    throw fs::filesystem_error(what, path, std::error_code(reason, std::generic_category()));
}

/// The length of a regular file. What is none may hold up whoever opens it, so that this comes first.
std::size_t LengthOf(const fs::path& path) {
    const std::uintmax_t length = fs::file_size(path);
    if (length > static_cast<std::uintmax_t>(std::numeric_limits<std::int32_t>::max())) {
        throw OverflowError("The file is " + std::to_string(length) +
                            " bytes long, and 2147483647 is the most");
    }
    return static_cast<std::size_t>(length);
}

std::ifstream OpenToRead(const fs::path& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) Fail("cannot open", path);
    return file;
}

void Read(std::ifstream& file, std::span<std::uint8_t> bytes, const fs::path& path) {
    errno = 0;
    file.read(reinterpret_cast<char*>(bytes.data()), std::ssize(bytes));
    if (!file) Fail("cannot read", path);
}

}  // namespace

fs::path PathOf(const std::string& text) {
    if (text.find('\0') != std::string::npos) {
        throw fs::filesystem_error("a path cannot hold a NUL", fs::path(text.substr(0, text.find('\0'))),
                                   std::make_error_code(std::errc::invalid_argument));
    }
    return PathFromUtf8(text);
}

bool FileExists(const std::string& path) {
    try {
        static_cast<void>(fs::file_size(PathOf(path)));
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

FileReader::FileReader(const fs::path& path) : path_(path), size_(LengthOf(path)), file_(OpenToRead(path)) {}

ByteSource FileReader::Source() {
    return {size_, [this](std::size_t offset) { return From(offset); }};
}

std::span<const std::uint8_t> FileReader::From(std::size_t offset) {
    const std::size_t end = begin_ + piece_.size();
    const bool atHand =
        offset >= begin_ && offset <= end && (end == size_ || end - offset >= ByteSource::kLeastPiece);
    if (!atHand) {
        piece_.resize(std::min(kPieceSize, size_ - offset));
        begin_ = offset;
        file_.seekg(static_cast<std::streamoff>(offset));
        Read(file_, piece_, path_);
    }
    return std::span(piece_).subspan(offset - begin_);
}

std::vector<std::uint8_t> ReadBytes(const fs::path& path) {
    std::vector<std::uint8_t> bytes(LengthOf(path));
    auto file = OpenToRead(path);
    Read(file, bytes, path);
    return bytes;
}

void ReplaceFile(const fs::path& path, std::span<const std::uint8_t> bytes) {
    const fs::file_status status = fs::status(path);
    fs::path target = path;
    if (fs::is_regular_file(status)) {
        if (fs::is_symlink(path)) target = fs::canonical(path);
        fs::remove(target);
    } else if (fs::exists(status) && !fs::is_character_file(status)) {
        const auto reason =
            fs::is_directory(status) ? std::errc::is_a_directory : std::errc::operation_not_permitted;
        throw fs::filesystem_error("cannot replace what is no file", path, std::make_error_code(reason));
    }
    errno = 0;
    std::ofstream file(target, std::ios::binary | std::ios::trunc);
    if (!file) Fail("cannot create", path);
    file.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    file.close();
    if (!file) Fail("cannot write", path);
}

}  // namespace vento::codec
