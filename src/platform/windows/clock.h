#pragma once

#include "platform/clock.h"
#include "platform/windows/owned_handle.h"

namespace vento::platform {

/// Sleeps by a timer of its own: the plain sleep of the system wakes up at its next tick, up to 16 ms late.
class WindowsClock final : public Clock {
  public:
    WindowsClock();
    [[nodiscard]] Duration Now() override;
    void Sleep(Duration duration) override;

  private:
    OwnedHandle timer_;
};

}  // namespace vento::platform
