#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "platform/windows/system.h"

namespace vento::platform {

/// UTF-8 to what the system's calls take, and back. What is not well formed becomes U+FFFD.
[[nodiscard]] std::wstring Wide(std::string_view utf8);
[[nodiscard]] std::string Utf8(std::wstring_view wide);

/// One of the system's error codes: a std::errc where the common reasons have one, otherwise as it is.
[[nodiscard]] std::error_code SystemError(DWORD error);

}  // namespace vento::platform
