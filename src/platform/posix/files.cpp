#include "platform/posix/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "platform/native.h"
#include "platform/posix/file_descriptor.h"

namespace vento::platform {
namespace {

constexpr std::size_t kLargestSettings = 1 << 20;

[[noreturn]] void ThrowReason(int error) {
    throw FileError(std::error_code(error, std::generic_category()));
}

// A name with a NUL in it would reach the system cut short, as the name of another file.
bool IsWhole(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

// The size that the system told is no promise: a file may grow, and some have no size until they are read.
std::string ReadToEnd(int file, std::size_t most) {
    std::string bytes;
    std::array<char, 65536> piece{};
    for (;;) {
        const ssize_t count = ::read(file, piece.data(), piece.size());
        if (count > 0) {
            if (static_cast<std::size_t>(count) > most - bytes.size()) throw FileTooLarge();
            bytes.append(piece.data(), static_cast<std::size_t>(count));
        } else if (count == 0) {
            return bytes;
        } else if (errno != EINTR) {
            ThrowReason(errno);
        }
    }
}

}  // namespace

std::string PosixFiles::ReadAll(const std::string& path, std::size_t most) {
    if (!IsWhole(path)) ThrowReason(ENOENT);
    // Without O_NONBLOCK a pipe without a writer would block here.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen()) ThrowReason(errno);
    struct stat status {};
    if (::fstat(file.Number(), &status) != 0) ThrowReason(errno);
    if (S_ISDIR(status.st_mode)) ThrowReason(EISDIR);
    if (!S_ISREG(status.st_mode)) throw FileError::NotRegular();
    if (static_cast<std::uintmax_t>(status.st_size) > most) throw FileTooLarge();
    return ReadToEnd(file.Number(), most);
}

// To the system the folder's permissions alone decide. Who has taken away the permission to write a file
// means it to stay, and the superuser, who may write everything, takes that from the mode.
void PosixFiles::Delete(const std::string& path) {
    struct stat status {};
    if (!IsWhole(path) || ::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return;
    const bool nobodyMayWrite = (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    if (nobodyMayWrite || ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) return;
    ::unlink(path.c_str());
}

std::size_t PosixFiles::ReadSection(std::string_view section, std::span<char> buffer,
                                    const std::filesystem::path& file) {
    std::string text;
    try {
        text = ReadAll(file.string(), kLargestSettings);
    } catch (const FileError&) {
        // A settings file that is not there has no lines, and neither has one that can't be read.
    }
    return CopySection(section, buffer, text);
}

std::filesystem::file_type NativeFileType(const std::filesystem::path& path) {
    std::error_code failed;
    const auto type = std::filesystem::status(path, failed).type();
    if (type == std::filesystem::file_type::none) throw FileError(failed);
    return type;
}

namespace {

// What a full disk has cut off must not stay, unless somebody has added something behind it.
void TakeBack(int file, off_t start, std::size_t written) {
    struct stat status {};
    if (written == 0 || ::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return;
    if (status.st_size == start + static_cast<off_t>(written)) static_cast<void>(::ftruncate(file, start));
}

}  // namespace

void AppendNatively(const std::filesystem::path& file, std::string_view text) {
    constexpr mode_t kMode = 0666;  // less what the user's mask takes away
    const FileDescriptor log(
        ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, kMode));
    if (!log.IsOpen()) ThrowReason(errno);
    std::size_t written = 0;
    off_t start = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(log.Number(), text.data() + written, text.size() - written);
        if (count > 0) {
            if (written == 0) start = ::lseek(log.Number(), 0, SEEK_CUR) - count;
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            const int reason = count == 0 ? ENOSPC : errno;
            TakeBack(log.Number(), start, written);
            ThrowReason(reason);
        }
    }
}

}  // namespace vento::platform
