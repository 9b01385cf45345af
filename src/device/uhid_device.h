#pragma once

#include <optional>
#include <span>
#include <string>

#include "device/kernel_device.h"
#include "platform/posix/file_descriptor.h"

namespace vento::device {

/// A HID device that the kernel takes from this program through /dev/uhid. No USB is involved.
class UhidDevice final : public KernelDevice {
  public:
    /// Makes the device. Throws std::system_error if /dev/uhid can't be opened, or the kernel won't have the
    /// device.
    explicit UhidDevice(platform::HidIdentity identity);

    /// The device's hidraw node below /dev.
    [[nodiscard]] std::optional<std::string> Place() const override;
    [[nodiscard]] int Descriptor() const override { return kernel_.Number(); }
    /// A program that asks for a feature report, which the device has none of, is told so in passing.
    [[nodiscard]] std::optional<DeviceEvent> NextEvent() override;
    /// Of any length up to 4096. There is always room.
    [[nodiscard]] bool Send(std::span<const std::uint8_t> payload) override;

  private:
    std::string place_;  ///< the physical address that the device claims, by which its node is found
    platform::FileDescriptor kernel_;
};

}  // namespace vento::device
