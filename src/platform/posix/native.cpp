#include "platform/native.h"

#include <algorithm>
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

/// A variable of the environment; one that is not set is empty.
std::string_view Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// The language of a locale: language[_TERRITORY][.CODESET][@modifier].
std::string_view LanguageIn(std::string_view locale) {
    return locale.substr(0, locale.find_first_of("_.@"));
}

}  // namespace

std::unique_ptr<Clock> MakeNativeClock() {
    return std::make_unique<SteadyClock>();
}

// As gettext has it: the locale of messages, and unless that is C a list of languages that goes before it.
std::optional<std::string> NativeLanguageAbbreviation() {
    std::string_view locale = Variable("LC_ALL");
    for (const char* const name : {"LC_MESSAGES", "LANG"}) {
        if (locale.empty()) locale = Variable(name);
    }
    const std::string_view own = LanguageIn(locale);
    std::string_view list = Variable("LANGUAGE");
    if (own.empty() || own == "C" || own == "POSIX" || list.empty()) list = locale;
    while (!list.empty()) {
        const std::string_view language = LanguageIn(list.substr(0, list.find(':')));
        if (language == "it" || language == "italian") return "ITA";
        if (language == "en" || language == "english") return "ENG";
        list.remove_prefix(std::min(list.find(':'), list.size() - 1) + 1);
    }
    return "ENG";
}

}  // namespace vento::platform
