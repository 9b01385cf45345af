#include "platform/linux/hidraw_advice.h"

#include "platform/advice.h"

namespace vento::platform {

std::string HidrawAdvice(OpenOutcome outcome, Language language) {
    constexpr AdviceText kForbidden{
        "Il trasmettitore è collegato, ma non hai il permesso di aprirlo. Copia il file 60-vento.rules "
        "di VENTO in /etc/udev/rules.d, scollega il trasmettitore e ricollegalo. La regola dà accesso "
        "all'utente che siede a questo computer, non a chi vi accede da un altro.",
        "The transmitter is connected, but you are not allowed to open it. Copy VENTO's file "
        "60-vento.rules to /etc/udev/rules.d, unplug the transmitter and plug it in again. The rule "
        "gives access to the user who sits at this computer, not to one who is logged in from "
        "another."};
    return AdviceFor(outcome, language, kForbidden);
}

}  // namespace vento::platform
