#include "desktop/web/web_desktop.h"

#include <nlohmann/json.hpp>

#include "desktop/layout.h"
#include "desktop/shown_text.h"
#include "desktop/web/script.h"
#include "platform/native.h"
#include "platform/web/web.h"

namespace vento::desktop::web {

void WebDesktop::Yield() {
    beforeTurn_();
    platform::TakeTurn();
}

void WebDesktop::ShowMessage(std::string_view text, std::string_view detail) {
    beforeTurn_();
    script::Ask(BoxJson(text, detail));
}

std::optional<std::string> WebDesktop::ChooseFile(std::string_view title, std::string_view filter) {
    return script::ChooseFile(title, filter);
}

// The form is the page: there is nothing around it to be centred in.
platform::TwipSize WebDesktop::ScreenSize() const {
    return {kFormArea.width, kFormArea.height};
}

std::optional<std::string> WebDesktop::LanguageAbbreviation() {
    return platform::NativeLanguageAbbreviation();
}

std::unique_ptr<platform::SleepInhibitor> WebDesktop::InhibitSleep(std::string_view reason) {
    return platform::InhibitNativeSleep(reason);
}

std::string BoxJson(std::string_view text, std::string_view detail) {
    return nlohmann::json{{"text", ShownText(text)}, {"detail", ShownText(detail)}}.dump();
}

}  // namespace vento::desktop::web
