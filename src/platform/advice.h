#pragma once

#include <string>
#include <string_view>

#include "platform/hid_host.h"
#include "text/language.h"

namespace vento::platform {

/// What a person is told, in either language.
struct AdviceText {
    std::string_view italian;
    std::string_view english;
};

/// What a real host says of an interface that could not be opened. Only who may open a device, and how that
/// is changed, differs between systems: `forbidden` says it. Empty for an outcome that needs no advice.
[[nodiscard]] inline std::string AdviceFor(OpenOutcome outcome, Language language,
                                           const AdviceText& forbidden) {
    constexpr AdviceText kBusy{
        "Il trasmettitore è collegato, ma un altro programma lo tiene per sé. Chiudi quel programma e "
        "riprova.",
        "The transmitter is connected, but another program keeps it to itself. Close that program and try "
        "again."};
    constexpr AdviceText kFailed{
        "Il trasmettitore è collegato, ma non è stato possibile aprirlo. Scollegalo, ricollegalo e riprova.",
        "The transmitter is connected, but it could not be opened. Unplug it, plug it in again and try once "
        "more."};
    const auto say = [language](const AdviceText& text) {
        return std::string(language == Language::italian ? text.italian : text.english);
    };
    switch (outcome) {
        case OpenOutcome::forbidden:
            return say(forbidden);
        case OpenOutcome::busy:
            return say(kBusy);
        case OpenOutcome::failed:
            return say(kFailed);
        case OpenOutcome::opened:
        case OpenOutcome::foreign:
            break;
    }
    return {};
}

}  // namespace vento::platform
