#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace vento::platform {

/// Copies the lines of the first section of that name, upper and lower case alike, from the text of an
/// initialisation file, as `Files::ReadSection` has it. Blank lines and comments (`;`) are left out, and so
/// are the blanks around a line. `buffer` holds two characters at least.
[[nodiscard]] std::size_t CopySection(std::string_view section, std::span<char> buffer,
                                      std::string_view text);

}  // namespace vento::platform
