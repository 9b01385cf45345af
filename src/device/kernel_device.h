#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/hid_host.h"

namespace vento::device {

/// HID 1.11, 6.2.2: one collection with an input and an output report of 64 bytes.
inline constexpr auto kReportDescriptor = std::to_array<std::uint8_t>({
    0x06, 0x00, 0xFF,  // usage page: vendor-defined
    0x09, 0x01,        // usage 1
    0xA1, 0x01,        // collection: application
    0x15, 0x00,        //   logical minimum 0
    0x26, 0xFF, 0x00,  //   logical maximum 255
    0x75, 0x08,        //   report size: 8 bits
    0x95, 0x40,        //   report count: 64
    0x09, 0x01,        //   usage 1
    0x81, 0x02,        //   input: data, variable, absolute
    0x09, 0x01,        //   usage 1
    0x91, 0x02,        //   output: data, variable, absolute
    0xC0,              // end of the collection
});

/// What the kernel tells of a device that it believes in.
struct DeviceEvent {
    enum class Kind : std::uint8_t {
        closed,  ///< the last of the programs that had the device open closed it; not told of a USB gadget
        output,  ///< a program wrote a report
    };
    Kind kind = Kind::closed;
    std::vector<std::uint8_t> report;  ///< of `output`: the report id, then the payload, as they were written
};

/// A HID device whose other end is in this program: input and output reports of 64 bytes without report ids,
/// on a usage page of a vendor's own. It is unplugged when its owner ends it.
class KernelDevice {
  public:
    KernelDevice() = default;
    KernelDevice(const KernelDevice&) = delete;
    KernelDevice& operator=(const KernelDevice&) = delete;
    KernelDevice(KernelDevice&&) = delete;
    KernelDevice& operator=(KernelDevice&&) = delete;
    virtual ~KernelDevice() = default;

    /// Where it can be found, once programs can find it; that takes a moment.
    [[nodiscard]] virtual std::optional<std::string> Place() const = 0;
    /// Readable (in the sense of poll) when there is an event, and writable when Send has room.
    [[nodiscard]] virtual int Descriptor() const = 0;
    /// The next event that is there; nothing if there is none.
    [[nodiscard]] virtual std::optional<DeviceEvent> NextEvent() = 0;
    /// Hands an input report to the programs that have the device open. False if the one before it has not
    /// been fetched yet.
    [[nodiscard]] virtual bool Send(std::span<const std::uint8_t> payload) = 0;
};

/// Where the interfaces of a scenario are plugged in.
struct Port {
    /// Plugs in the scenario's interface with this index, counted from 0. Throws std::system_error.
    std::function<std::unique_ptr<KernelDevice>(std::size_t index, platform::HidIdentity)> plugIn;
    bool hostMayBeAbsent = false;  ///< nobody may be there yet to find a device
};

}  // namespace vento::device
