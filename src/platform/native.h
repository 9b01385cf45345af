#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/hid_host.h"

/// What the operating system that the program was built for puts behind the interfaces. One definition per
/// system.
namespace vento::platform {

/// The ways to HID devices that there are. Who may open a device, and how that is changed, depends on it.
enum class HidBackEnd : std::uint8_t { hidraw, windows, webHid, simulation };

[[nodiscard]] std::unique_ptr<HidHost> MakeNativeHidHost();
[[nodiscard]] HidBackEnd NativeHidBackEnd();
[[nodiscard]] std::unique_ptr<Files> MakeNativeFiles();
[[nodiscard]] std::unique_ptr<Clock> MakeNativeClock();

/// What a path leads to. Throws FileError where that can't be told.
[[nodiscard]] std::filesystem::file_type NativeFileType(const std::filesystem::path& path);

/// Adds `text` at the end of a file, which is made if it is not there, in one step: what several processes
/// add is not mixed. Throws FileError.
void AppendNatively(const std::filesystem::path& file, std::string_view text);

/// See Desktop::InhibitSleep. Takes 2 seconds at the most.
[[nodiscard]] std::unique_ptr<SleepInhibitor> InhibitNativeSleep(std::string_view reason);

/// The three-letter abbreviation of the desktop's language; nothing if it can't be told.
[[nodiscard]] std::optional<std::string> NativeLanguageAbbreviation();

}  // namespace vento::platform
