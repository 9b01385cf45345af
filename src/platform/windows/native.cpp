#include "platform/native.h"

#include "platform/windows/clock.h"
#include "platform/windows/files.h"
#include "platform/windows/hid_host.h"
#include "platform/windows/language.h"

namespace vento::platform {

std::unique_ptr<HidHost> MakeNativeHidHost() {
    return std::make_unique<WindowsHidHost>();
}

std::unique_ptr<Files> MakeNativeFiles() {
    return std::make_unique<WindowsFiles>();
}

std::unique_ptr<Clock> MakeNativeClock() {
    return std::make_unique<WindowsClock>();
}

std::optional<std::string> NativeLanguageAbbreviation() {
    return RegionLanguage();
}

}  // namespace vento::platform
