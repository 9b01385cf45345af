#include "platform/windows/clock.h"

#include <ratio>

namespace vento::platform {
namespace {

constexpr DWORD kHighResolution =
    0x2;  // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION, which mingw-w64 10 does not have

OwnedHandle MakeTimer(DWORD flags) {
    return OwnedHandle(::CreateWaitableTimerExW(nullptr, nullptr, flags, TIMER_ALL_ACCESS));
}

}  // namespace

WindowsClock::WindowsClock() : timer_(MakeTimer(kHighResolution)) {
    if (!timer_) timer_ = MakeTimer(0);  // Windows before 10 1803 knows no finer one
}

Clock::Duration WindowsClock::Now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

void WindowsClock::Sleep(Duration duration) {
    using Ticks = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>;
    LARGE_INTEGER due{};
    due.QuadPart = -std::chrono::ceil<Ticks>(duration).count();  // below zero: from now on
    if (due.QuadPart >= 0) return;
    if (::SetWaitableTimer(timer_.Get(), &due, 0, nullptr, nullptr, FALSE) != 0) {
        ::WaitForSingleObject(timer_.Get(), INFINITE);
    }
}

}  // namespace vento::platform
