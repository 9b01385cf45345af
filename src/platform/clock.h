#pragma once

#include <chrono>

namespace vento::platform {

/// Time that only goes forward, and a way to let some of it pass.
class Clock {
  public:
    using Duration = std::chrono::nanoseconds;

    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    Clock(Clock&&) = delete;
    Clock& operator=(Clock&&) = delete;
    virtual ~Clock() = default;

    /// Time since some fixed moment.
    [[nodiscard]] virtual Duration Now() = 0;

    virtual void Sleep(Duration duration) = 0;
};

}  // namespace vento::platform
