#include "platform/linux/clock.h"

#include <thread>

namespace vento::platform {

Clock::Duration LinuxClock::Now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

void LinuxClock::Sleep(Duration duration) {
    std::this_thread::sleep_for(duration);
}

}  // namespace vento::platform
