#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/hid_host.h"
#include "platform/linux/file_descriptor.h"

namespace vento::uhid {

/// What the kernel tells of a device that it believes in.
struct DeviceEvent {
    enum class Kind : std::uint8_t {
        opened,  ///< the first of the programs that have the device opened it
        closed,  ///< the last one closed it
        output,  ///< a program wrote a report
    };
    Kind kind = Kind::opened;
    std::vector<std::uint8_t> report;  ///< of `output`: the report id, then the payload, as they were written
};

/// A HID device of the kernel whose other end is in this program: input and output reports of 64 bytes
/// without report ids, on a usage page of a vendor's own. It goes when its owner does.
class UhidDevice {
  public:
    /// Makes the device. Throws std::system_error if /dev/uhid can't be opened, or the kernel won't have the
    /// device.
    explicit UhidDevice(platform::HidIdentity identity);

    /// The device's hidraw node below /dev; nothing while the kernel has made none. It takes a moment.
    [[nodiscard]] std::optional<std::filesystem::path> Node() const;

    /// Readable (in the sense of poll) when there is an event.
    [[nodiscard]] int Descriptor() const { return kernel_.Number(); }

    /// The next event that is there; nothing if there is none. A program that asks for a feature report,
    /// which the device has none of, is told so in passing.
    [[nodiscard]] std::optional<DeviceEvent> NextEvent();

    /// Hands an input report, which may have any length up to 4096, to the programs that have the device
    /// open.
    void Send(std::span<const std::uint8_t> payload);

  private:
    std::string place_;  ///< the physical address that the device claims, by which its node is found
    platform::FileDescriptor kernel_;
};

}  // namespace vento::uhid
