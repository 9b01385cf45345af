#include "platform/windows/language.h"

#include <array>

#include "platform/windows/system.h"
#include "platform/windows/text.h"

namespace vento::platform {

std::optional<std::string> RegionLanguage() {
    std::array<wchar_t, 32> value{};
    auto bytes = static_cast<DWORD>(sizeof value);
    if (::RegGetValueW(HKEY_CURRENT_USER, L"Control Panel\\International", L"sLanguage", RRF_RT_REG_SZ,
                       nullptr, value.data(), &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return Utf8(value.data());
}

}  // namespace vento::platform
