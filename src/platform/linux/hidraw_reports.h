#pragma once

#include "platform/hid_host.h"

namespace vento::platform {

/// Writes one report to a hidraw node. True only if the kernel took all 65 bytes; it would accept any other
/// length just as well.
[[nodiscard]] bool WriteWholeReport(int node, const Report& report);

/// Waits for one report, 1 second at the most. True only if it has exactly the 64 bytes of the payload; a
/// shorter or a longer one is used up and lost. `report` is unchanged unless true.
[[nodiscard]] bool ReadWholeReport(int node, Report& report);

}  // namespace vento::platform
