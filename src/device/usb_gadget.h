#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "device/kernel_device.h"
#include "platform/posix/file_descriptor.h"

namespace vento::device {

/// Why this machine can't be a USB device, and what to do about it.
class GadgetError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The USB device controllers that no gadget uses, by name. `wanted` chooses some, in its order. Throws
/// GadgetError if one of `wanted` is not there or not free, or if there are fewer than `count`.
[[nodiscard]] std::vector<std::string> FreeControllers(const std::vector<std::string>& wanted,
                                                       std::size_t count);

/// A USB HID device on a device controller of this machine, made through configfs and served through the
/// kernel's HID function. Whatever computer the controller's port is connected to is the host.
///
/// The host is seen by its reports alone: it does not tell when a program opens or closes the device.
class UsbGadget final : public KernelDevice {
  public:
    struct Setup {
        platform::HidIdentity identity;
        std::string controller;
        bool keyboardFirst = false;  ///< a composite device, whose first interface is a boot keyboard
    };

    /// Plugs the device in. Throws GadgetError where the kernel lacks what it takes, std::system_error
    /// otherwise.
    explicit UsbGadget(const Setup& setup);
    UsbGadget(const UsbGadget&) = delete;
    UsbGadget& operator=(const UsbGadget&) = delete;
    UsbGadget(UsbGadget&&) = delete;
    UsbGadget& operator=(UsbGadget&&) = delete;
    ~UsbGadget() override;

    /// The controller, once a host has configured the device.
    [[nodiscard]] std::optional<std::string> Place() const override;
    [[nodiscard]] int Descriptor() const override { return reports_.Number(); }
    [[nodiscard]] std::optional<DeviceEvent> NextEvent() override;
    [[nodiscard]] bool Send(std::span<const std::uint8_t> payload) override;

  private:
    void Build(const Setup& setup);

    std::string controller_;
    std::string folder_;                ///< of the gadget in configfs
    platform::FileDescriptor state_;    ///< of the controller, as read before the device was plugged in
    platform::FileDescriptor reports_;  ///< the node of the HID function
};

}  // namespace vento::device
