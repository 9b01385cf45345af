#include "platform/linux/language.h"

#include <cstdlib>

namespace vento::platform {

std::string_view MessageLanguage() {
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
