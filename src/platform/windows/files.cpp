#include "platform/windows/files.h"

#include <cstdint>
#include <vector>

#include "platform/native.h"
#include "platform/windows/owned_handle.h"
#include "platform/windows/system.h"
#include "platform/windows/text.h"

namespace vento::platform {
namespace {

[[noreturn]] void ThrowReason(DWORD error) {
    throw FileError(SystemError(error));
}

// Opens what is there, or leaves the reason with the system. A name with a NUL in it would reach the system
// cut short, as the name of another file.
OwnedHandle Open(const std::string& path, DWORD access, DWORD flags) {
    if (path.find('\0') != std::string::npos) {
        ::SetLastError(ERROR_INVALID_NAME);
        return {};
    }
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return OwnedHandle(
        ::CreateFileW(Wide(path).c_str(), access, kShareAll, nullptr, OPEN_EXISTING, flags, nullptr));
}

// Whether it is a file and neither a folder nor a link to somewhere else. Files that are stored elsewhere,
// as in a cloud folder, have a reparse point too, but not one that stands for another name.
bool IsRegularFile(HANDLE file) {
    FILE_ATTRIBUTE_TAG_INFO info{};
    if (::GetFileType(file) != FILE_TYPE_DISK ||
        ::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &info, sizeof info) == 0) {
        return false;
    }
    const bool isFolder = (info.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isLink = (info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                        IsReparseTagNameSurrogate(info.ReparseTag);
    return !isFolder && !isLink;
}

// The size that the system told is no promise: a file may grow.
std::string ReadToEnd(HANDLE file, std::size_t most) {
    std::string bytes;
    std::vector<char> piece(65536);
    for (;;) {
        DWORD count = 0;
        if (::ReadFile(file, piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) == 0) {
            ThrowReason(::GetLastError());
        }
        if (count == 0) return bytes;
        if (count > most - bytes.size()) throw FileTooLarge();
        bytes.append(piece.data(), count);
    }
}

}  // namespace

std::string WindowsFiles::ReadAll(const std::string& path, std::size_t most) {
    const OwnedHandle file = Open(path, GENERIC_READ, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file) {
        const DWORD error = ::GetLastError();
        // All that the system says of a folder is that access is denied.
        const DWORD attributes = ::GetFileAttributesW(Wide(path).c_str());
        const bool isFolder =
            attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (error == ERROR_ACCESS_DENIED && isFolder) throw FileError(std::errc::is_a_directory);
        ThrowReason(error);
    }
    if (::GetFileType(file.Get()) != FILE_TYPE_DISK) throw FileError::NotRegular();
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(file.Get(), &size) == 0) ThrowReason(::GetLastError());
    if (static_cast<std::uint64_t>(size.QuadPart) > most) throw FileTooLarge();
    return ReadToEnd(file.Get(), most);
}

void WindowsFiles::Delete(const std::string& path) {
    const OwnedHandle file = Open(path, DELETE, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file || !IsRegularFile(file.Get())) return;
    FILE_DISPOSITION_INFO gone{.DeleteFile = TRUE};
    ::SetFileInformationByHandle(file.Get(), FileDispositionInfo, &gone, sizeof gone);
}

std::filesystem::path WindowsFiles::ProgramFolder() {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD count = ::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
        if (count < name.size()) return std::filesystem::path(name.substr(0, count)).parent_path();
        name.resize(name.size() * 2);  // it was cut off
    }
}

std::size_t WindowsFiles::ReadSection(std::string_view section, std::span<char> buffer,
                                      const std::filesystem::path& file) {
    return ::GetPrivateProfileSectionA(std::string(section).c_str(), buffer.data(),
                                       static_cast<DWORD>(buffer.size()), Utf8(file.native()).c_str());
}

std::filesystem::file_type NativeFileType(const std::filesystem::path& path) {
    std::error_code failed;
    const auto type = std::filesystem::status(path, failed).type();
    if (type == std::filesystem::file_type::none) throw FileError(failed);
    return type;
}

void AppendNatively(const std::filesystem::path& file, std::string_view text) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const OwnedHandle log(::CreateFileW(file.c_str(), FILE_APPEND_DATA, kShareAll, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!log) ThrowReason(::GetLastError());
    DWORD count = 0;
    if (::WriteFile(log.Get(), text.data(), static_cast<DWORD>(text.size()), &count, nullptr) == 0)
        ThrowReason(::GetLastError());
    if (count != text.size()) ThrowReason(ERROR_DISK_FULL);
}

}  // namespace vento::platform
