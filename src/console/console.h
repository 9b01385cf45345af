#pragma once

#include <string>
#include <vector>

#include "platform/terminal.h"

namespace vento::console {

/// The console program from its arguments (UTF-8, without the program's name) to its exit status. Throws
/// nothing.
[[nodiscard]] int RunConsole(const std::vector<std::string>& arguments, const platform::Terminal& terminal);

}  // namespace vento::console
