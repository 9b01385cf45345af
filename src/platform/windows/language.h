#pragma once

#include <optional>
#include <string>

namespace vento::platform {

/// The abbreviation that the user's regional settings have for the language; nothing if they have none.
[[nodiscard]] std::optional<std::string> RegionLanguage();

}  // namespace vento::platform
