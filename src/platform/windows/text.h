#pragma once

#include <string>
#include <string_view>

#include "platform/windows/system.h"

namespace vento::platform {

/// UTF-8 to what the system's calls take, and back. What is not well formed becomes U+FFFD.
[[nodiscard]] std::wstring Wide(std::string_view utf8);
[[nodiscard]] std::string Utf8(std::wstring_view wide);

/// The system's own words for one of its error codes, without a line end.
[[nodiscard]] std::string SystemReason(DWORD error);

}  // namespace vento::platform
