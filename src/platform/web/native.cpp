#include "platform/native.h"

#include <chrono>

#include "platform/web/script.h"
#include "platform/web/web.h"
#include "platform/web/web_hid_host.h"

namespace vento::platform {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

class WebClock final : public Clock {
  public:
    [[nodiscard]] Duration Now() override {
        return std::chrono::duration_cast<Duration>(Milliseconds(script::Now()));
    }
    void Sleep(Duration duration) override { script::Sleep(Milliseconds(duration).count()); }
};

class AwakeScreen final : public SleepInhibitor {
  public:
    AwakeScreen() { script::Awake(true); }
    AwakeScreen(const AwakeScreen&) = delete;
    AwakeScreen& operator=(const AwakeScreen&) = delete;
    AwakeScreen(AwakeScreen&&) = delete;
    AwakeScreen& operator=(AwakeScreen&&) = delete;
    ~AwakeScreen() override { script::Awake(false); }
};

}  // namespace

std::unique_ptr<HidHost> MakeNativeHidHost() {
    return std::make_unique<WebHidHost>();
}

HidBackEnd NativeHidBackEnd() {
    return HidBackEnd::webHid;
}

std::unique_ptr<Clock> MakeNativeClock() {
    return std::make_unique<WebClock>();
}

std::unique_ptr<SleepInhibitor> InhibitNativeSleep(std::string_view /*reason*/) {
    return std::make_unique<AwakeScreen>();
}

std::optional<std::string> NativeLanguageAbbreviation() {
    return script::Italian() ? "ITA" : "ENG";
}

void TakeTurn() {
    script::Turn();
}

}  // namespace vento::platform
