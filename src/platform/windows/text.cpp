#include "platform/windows/text.h"

namespace vento::platform {

std::wstring Wide(std::string_view utf8) {
    const int size = static_cast<int>(utf8.size());
    std::wstring wide(utf8.size(), L'\0');  // no character has fewer bytes than UTF-16 units
    const int count = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(count));
    return wide;
}

std::string Utf8(std::wstring_view wide) {
    constexpr std::size_t kMostBytesPerUnit = 3;
    std::string utf8(wide.size() * kMostBytesPerUnit, '\0');
    const int count = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()),
                                            utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(count));
    return utf8;
}

std::error_code SystemError(DWORD error) {
    const auto common = [](std::errc reason) { return std::make_error_code(reason); };
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_INVALID_DRIVE:
            return common(std::errc::no_such_file_or_directory);
        case ERROR_ACCESS_DENIED:
            return common(std::errc::permission_denied);
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return common(std::errc::no_space_on_device);
        case ERROR_WRITE_PROTECT:
            return common(std::errc::read_only_file_system);
        case ERROR_FILENAME_EXCED_RANGE:
            return common(std::errc::filename_too_long);
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return common(std::errc::device_or_resource_busy);
        default:
            return {static_cast<int>(error), std::system_category()};
    }
}

}  // namespace vento::platform
