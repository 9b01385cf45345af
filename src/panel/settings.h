#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace vento {

/// The lines of a section of the settings file, "\\Firmware\\Quarzolab.ini" below the program's folder. No
/// lines if the file or the section is missing or empty.
[[nodiscard]] std::vector<std::string> ReadSettingsSection(platform::Files& files, std::string_view section);

}  // namespace vento
