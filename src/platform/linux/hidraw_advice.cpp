#include "platform/linux/hidraw_advice.h"

#include <array>
#include <string_view>

namespace vento::platform {
namespace {

struct AdviceText {
    OpenOutcome outcome;
    std::string_view italian;
    std::string_view english;
};

constexpr std::array kTexts{
    AdviceText{
        OpenOutcome::forbidden,
        "Il trasmettitore è collegato, ma non hai il permesso di aprirlo. Copia il file 60-vento.rules "
        "di VENTO in /etc/udev/rules.d, scollega il trasmettitore e ricollegalo. La regola dà accesso "
        "all'utente che siede a questo computer, non a chi vi accede da un altro.",
        "The transmitter is connected, but you are not allowed to open it. Copy VENTO's file "
        "60-vento.rules to /etc/udev/rules.d, unplug the transmitter and plug it in again. The rule "
        "gives access to the user who sits at this computer, not to one who is logged in from "
        "another."},
    AdviceText{OpenOutcome::busy,
               "Il trasmettitore è collegato, ma un altro programma lo tiene per sé. Chiudi quel programma e "
               "riprova.",
               "The transmitter is connected, but another program keeps it to itself. Close that program and "
               "try again."},
    AdviceText{
        OpenOutcome::failed,
        "Il trasmettitore è collegato, ma non è stato possibile aprirlo. Scollegalo, ricollegalo e "
        "riprova.",
        "The transmitter is connected, but it could not be opened. Unplug it, plug it in again and try "
        "once more."},
};

}  // namespace

std::string HidrawAdvice(OpenOutcome outcome, Tongue tongue) {
    for (const AdviceText& text : kTexts) {
        if (text.outcome == outcome) {
            return std::string(tongue == Tongue::italian ? text.italian : text.english);
        }
    }
    return {};
}

}  // namespace vento::platform
