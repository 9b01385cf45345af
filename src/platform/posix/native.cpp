#include "platform/native.h"

#include <cstdlib>
#include <string_view>
#include <thread>

namespace vento::platform {
namespace {

class SteadyClock final : public Clock {
  public:
    [[nodiscard]] Duration Now() override { return std::chrono::steady_clock::now().time_since_epoch(); }
    void Sleep(Duration duration) override { std::this_thread::sleep_for(duration); }
};

}  // namespace

std::unique_ptr<Clock> MakeNativeClock() {
    return std::make_unique<SteadyClock>();
}

// "ITA" if messages are wanted in Italian, else "ENG".
std::optional<std::string> NativeLanguageAbbreviation() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') continue;
        const std::string_view locale = value;  // language[_TERRITORY][.CODESET][@modifier]
        const std::string_view language = locale.substr(0, locale.find_first_of("_.@"));
        return language == "it" || language == "italian" ? "ITA" : "ENG";
    }
    return "ENG";
}

}  // namespace vento::platform
