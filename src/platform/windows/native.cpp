#include "platform/native.h"

#include <array>
#include <ratio>

#include "platform/windows/files.h"
#include "platform/windows/hid_host.h"
#include "platform/windows/owned_handle.h"
#include "platform/windows/system.h"
#include "platform/windows/text.h"

namespace vento::platform {
namespace {

constexpr DWORD kHighResolution =
    0x2;  // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION, which mingw-w64 10 does not have

/// Time that the computer was asleep does not count, unlike in the C++ library's clock.
using ReadTime = VOID(WINAPI*)(PULONGLONG time);

/// The finer of the two that are there; the other one goes by the system's ticks.
ReadTime FinestTime() {
    const FARPROC precise =
        ::GetProcAddress(::GetModuleHandleW(L"kernelbase.dll"), "QueryUnbiasedInterruptTimePrecise");
    if (precise != nullptr) return reinterpret_cast<ReadTime>(reinterpret_cast<void*>(precise));
    return [](PULONGLONG time) { ::QueryUnbiasedInterruptTime(time); };
}

/// The system stays awake for a thread that asked for it; its screen need not.
class AwakeThread final : public SleepInhibitor {
  public:
    AwakeThread() { ::SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED); }
    AwakeThread(const AwakeThread&) = delete;
    AwakeThread& operator=(const AwakeThread&) = delete;
    AwakeThread(AwakeThread&&) = delete;
    AwakeThread& operator=(AwakeThread&&) = delete;
    ~AwakeThread() override { ::SetThreadExecutionState(ES_CONTINUOUS); }
};

OwnedHandle MakeTimer(DWORD flags) {
    return OwnedHandle(::CreateWaitableTimerExW(nullptr, nullptr, flags, TIMER_ALL_ACCESS));
}

// Sleeps by a timer of its own: the plain sleep of the system wakes up at its next tick, up to 16 ms late.
class WindowsClock final : public Clock {
  public:
    WindowsClock() : timer_(MakeTimer(kHighResolution)) {
        if (!timer_) timer_ = MakeTimer(0);  // Windows before 10 1803 knows no finer one
    }

    [[nodiscard]] Duration Now() override {
        ULONGLONG ticks = 0;
        readTime_(&ticks);
        return Ticks(static_cast<LONGLONG>(ticks));
    }

    void Sleep(Duration duration) override {
        LARGE_INTEGER due{};
        due.QuadPart = -std::chrono::ceil<Ticks>(duration).count();  // below zero: from now on
        if (due.QuadPart >= 0) return;
        if (::SetWaitableTimer(timer_.Get(), &due, 0, nullptr, nullptr, FALSE) != 0) {
            ::WaitForSingleObject(timer_.Get(), INFINITE);
        }
    }

  private:
    using Ticks = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>;

    ReadTime readTime_ = FinestTime();
    OwnedHandle timer_;
};

}  // namespace

std::unique_ptr<HidHost> MakeNativeHidHost() {
    return std::make_unique<WindowsHidHost>();
}

HidBackEnd NativeHidBackEnd() {
    return HidBackEnd::windows;
}

std::unique_ptr<Files> MakeNativeFiles() {
    return std::make_unique<WindowsFiles>();
}

std::unique_ptr<Clock> MakeNativeClock() {
    return std::make_unique<WindowsClock>();
}

std::unique_ptr<SleepInhibitor> InhibitNativeSleep(std::string_view /*reason*/) {
    return std::make_unique<AwakeThread>();
}

// The user's regional settings hold it.
std::optional<std::string> NativeLanguageAbbreviation() {
    std::array<wchar_t, 32> value{};
    auto bytes = static_cast<DWORD>(sizeof value);
    if (::RegGetValueW(HKEY_CURRENT_USER, L"Control Panel\\International", L"sLanguage", RRF_RT_REG_SZ,
                       nullptr, value.data(), &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return Utf8(value.data());
}

}  // namespace vento::platform
