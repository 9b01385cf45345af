#pragma once

#include "platform/hid_host.h"
#include "platform/windows/system.h"

namespace vento::platform {

/// Sends one report over a device that was opened for overlapped transfers, in 1 second at the most. True
/// only if all of it was taken. `completed` is an event for the transfer's own use.
///
/// This and `ReadWholeReport` come back when the transfer has ended, never before: one that takes too long is
/// cancelled and waited for, since until then the report belongs to the system.
[[nodiscard]] bool WriteWholeReport(HANDLE device, HANDLE completed, const Report& report);

/// Waits for one report, 1 second at the most. True only if it is a whole one; `report` is unchanged
/// otherwise.
[[nodiscard]] bool ReadWholeReport(HANDLE device, HANDLE completed, Report& report);

}  // namespace vento::platform
