#pragma once

#include <cstddef>
#include <cstdint>

/// What platform.js does for this room. A text or a buffer is the address and the size of bytes in the
/// module's memory; the script has copied them by the time the call comes back. Those marked as suspending
/// may only be called from an export that the script has made `promising`: all others run while it waits.
namespace vento::platform::script {

#define VENTO_SCRIPT(name) [[clang::import_module("platform"), clang::import_name(name)]]

/// Milliseconds since some fixed moment.
VENTO_SCRIPT("now") double Now();
/// Suspending. Lets that much time pass, in a tab that nobody sees as well.
VENTO_SCRIPT("sleep") void Sleep(double milliseconds);
/// Suspending. One turn of the event loop.
VENTO_SCRIPT("turn") void Turn();
/// Whether the page is wanted in Italian.
VENTO_SCRIPT("italian") bool Italian();
/// Begins or ends to keep the screen awake.
VENTO_SCRIPT("awake") void Awake(bool on);

/// Suspending. The browser asks its user for a device of one of these vendors; whether one was chosen.
VENTO_SCRIPT("hid_request") bool HidRequest(const std::uint16_t* vendorIds, std::size_t count);
/// The number of the granted interface in this place of the list, 0 behind the last. An interface gets a new
/// number each time it is plugged in.
VENTO_SCRIPT("hid_at") std::uint32_t HidAt(std::size_t place);
/// Vendor id in the upper half, product id in the lower one; 0 for one that is gone.
VENTO_SCRIPT("hid_identity") std::uint32_t HidIdentity(std::uint32_t device);
/// Another page works with it, and did so when it was last to be opened here.
VENTO_SCRIPT("hid_is_elsewhere") bool HidIsElsewhere(std::uint32_t device);
/// Keyboard or mouse, and nothing else.
VENTO_SCRIPT("hid_is_system_input") bool HidIsSystemInput(std::uint32_t device);
/// Bytes of the longest input report in the upper half, of the longest output report in the lower one.
VENTO_SCRIPT("hid_lengths") std::uint32_t HidLengths(std::uint32_t device);

enum class Opened : std::uint8_t { opened, forbidden, held, failed };
/// Suspending. Opens the interface, unless it is open, locks it against other pages, and forgets what has
/// come from it.
VENTO_SCRIPT("hid_open") Opened HidOpen(std::uint32_t device);
/// Suspending. Sends 64 bytes; whether they went out within a second.
VENTO_SCRIPT("hid_write") bool HidWrite(std::uint32_t device, const std::uint8_t* payload);
/// Suspending. Waits for a report, a second at the most, and copies up to 64 bytes of it; how many it has.
VENTO_SCRIPT("hid_read") std::size_t HidRead(std::uint32_t device, std::uint8_t* payload);
/// Closes and unlocks whatever is open.
VENTO_SCRIPT("hid_release") void HidRelease();

/// -1 where there is no such file.
VENTO_SCRIPT("file_size") double FileSize(const char* path, std::size_t size);
/// Whether the bytes are there, which a very large file's are not.
VENTO_SCRIPT("file_read") bool FileRead(const char* path, std::size_t size, char* bytes);
VENTO_SCRIPT("file_write")
void FileWrite(const char* path, std::size_t size, const std::uint8_t* bytes, std::size_t count);
VENTO_SCRIPT("file_delete") void FileDelete(const char* path, std::size_t size);

#undef VENTO_SCRIPT

}  // namespace vento::platform::script
