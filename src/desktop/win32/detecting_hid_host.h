#pragma once

#include "platform/hid_host.h"

namespace vento::desktop::win32 {

/// A host that tells of a wanted device by opening it for a moment, which is the only way to know on Windows
/// whether that would work. Nothing is sent, and foreign interfaces stay closed. What the host behind it
/// tells by itself holds.
class DetectingHidHost final : public platform::ForwardingHidHost {
  public:
    using ForwardingHidHost::ForwardingHidHost;

    [[nodiscard]] platform::Presence Detect(platform::Wanted wanted) override;
};

}  // namespace vento::desktop::win32
