#include "console/console_desktop.h"

#include "console/interruption.h"

namespace vento::console {

void ConsoleDesktop::Yield() {
    EndIfDemanded(terminal_);
    const int interrupts = terminal_.Interrupts();
    if (interrupts == interruptsHandled_) return;
    interruptsHandled_ = interrupts;
    if (onInterrupt_) onInterrupt_();
}

void ConsoleDesktop::ShowMessage(std::string_view text, std::string_view detail) {
    latestMessage_ = text;
    latestDetail_ = detail;
    notices_.Error(text, detail);
}

std::optional<std::string> ConsoleDesktop::LanguageAbbreviation() {
    return language_ == Language::italian ? "ITA" : "ENG";
}

}  // namespace vento::console
