#pragma once

#include "platform/clock.h"

namespace vento::platform {

class LinuxClock final : public Clock {
  public:
    [[nodiscard]] Duration Now() override;
    void Sleep(Duration duration) override;
};

}  // namespace vento::platform
