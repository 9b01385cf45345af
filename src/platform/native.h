#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/hid_host.h"

/// What the operating system that the program was built for puts behind the interfaces. One definition per
/// system.
namespace vento::platform {

[[nodiscard]] std::unique_ptr<HidHost> MakeNativeHidHost();
[[nodiscard]] std::unique_ptr<Files> MakeNativeFiles();
[[nodiscard]] std::unique_ptr<Clock> MakeNativeClock();

/// The three-letter abbreviation of the desktop's language; nothing if it can't be told.
[[nodiscard]] std::optional<std::string> NativeLanguageAbbreviation();

}  // namespace vento::platform
