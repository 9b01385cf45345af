#pragma once

#include <cstdint>
#include <span>

#include "platform/hid_host.h"

namespace vento::platform {

/// What a HID report descriptor says of its interface as a whole.
struct ReportDescriptor {
    /// Keyboard or mouse, and no collection of a vendor's own beside it: the system takes its input from
    /// there, and no other program has any business with it.
    bool isSystemInput = false;
    ReportLengths lengths;
};

/// Reads the items of HID 1.11, 6.2.2, as far as they go; what is behind a broken one is not looked at.
[[nodiscard]] ReportDescriptor ParseReportDescriptor(std::span<const std::uint8_t> bytes);

}  // namespace vento::platform
