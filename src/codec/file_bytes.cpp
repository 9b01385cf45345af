#include "codec/file_bytes.h"

#include <cerrno>
#include <fstream>
#include <ios>
#include <limits>
#include <string>
#include <system_error>

#include "codec/cls_huffman.h"

namespace vento::codec {
namespace {

/// Throws what the system said about the last call that failed, or an input/output error if it said nothing.
[[noreturn]] void Fail(const char* what, const std::filesystem::path& path) {
    const int reason = errno != 0 ? errno : EIO;
    throw std::filesystem::filesystem_error(what, path, std::error_code(reason, std::generic_category()));
}

}  // namespace

std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& path) {
    // This comes first: what is no regular file may hold up whoever opens it.
    const std::uintmax_t length = std::filesystem::file_size(path);
    if (length > static_cast<std::uintmax_t>(std::numeric_limits<std::int32_t>::max())) {
        throw OverflowError("The file is " + std::to_string(length) +
                            " bytes long, and 2147483647 is the most");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) Fail("cannot open", path);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file) Fail("cannot read", path);
    return bytes;
}

void ReplaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    std::filesystem::remove(path);
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) Fail("cannot create", path);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) Fail("cannot write", path);
}

}  // namespace vento::codec
