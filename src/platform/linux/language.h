#pragma once

#include <string_view>

namespace vento::platform {

/// "ITA" if messages are wanted in Italian, else "ENG": the first of the environment's LC_ALL, LC_MESSAGES
/// and LANG that is set and not empty decides.
[[nodiscard]] std::string_view MessageLanguage();

}  // namespace vento::platform
