#include "platform/native.h"

#include "platform/linux/clock.h"
#include "platform/linux/files.h"
#include "platform/linux/hidraw_host.h"
#include "platform/linux/language.h"

namespace vento::platform {

std::unique_ptr<HidHost> MakeNativeHidHost() {
    return std::make_unique<HidrawHost>();
}

std::unique_ptr<Files> MakeNativeFiles() {
    return std::make_unique<LinuxFiles>();
}

std::unique_ptr<Clock> MakeNativeClock() {
    return std::make_unique<LinuxClock>();
}

std::optional<std::string> NativeLanguageAbbreviation() {
    return std::string(MessageLanguage());
}

}  // namespace vento::platform
