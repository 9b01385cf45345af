#include "platform/windows/text.h"

#include <array>

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

std::string SystemReason(DWORD error) {
    std::array<wchar_t, 512> text{};
    const DWORD count = ::FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK, nullptr,
        error, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    if (count == 0) return "Windows error " + std::to_string(error);
    const std::wstring_view reason(text.data(), count);
    return Utf8(reason.substr(0, reason.find_last_not_of(L' ') + 1));
}

}  // namespace vento::platform
