# Run at each build: writes the commit of the sources in SOURCE into the header OUTPUT, which stays untouched while that
# is the same. Without git, or outside a clone, the commit is empty.
execute_process(COMMAND git -C ${SOURCE} describe --always --dirty --abbrev=12 --exclude=*
    OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT [[
#pragma once

#include <string_view>

namespace vento {

/// The commit of the sources; empty where it is not known.
inline constexpr std::string_view kCommit{"@commit@"};

}  // namespace vento
]] @ONLY)
