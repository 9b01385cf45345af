#pragma once

#include <cstdint>
#include <optional>

#include "platform/hid_host.h"

/// Finding the transmitter among the HID interfaces of the machine. The search has no memory: it runs in full
/// before every frame, so that a transmitter may come and go between any two of them.
namespace vento {

/// Vendor ids of the transmitters, first and second kind. Any product of theirs is taken for one.
inline constexpr std::uint16_t kFirstKindVendor = 1240;    // 0x04D8
inline constexpr std::uint16_t kSecondKindVendor = 11025;  // 0x2B11

[[nodiscard]] bool IsTransmitter(platform::HidIdentity identity);

/// An open device; it is closed at the end of its owner's life.
class HidDevice {
  public:
    HidDevice() = default;
    HidDevice(platform::HidHost& host, platform::HidHandle handle) : host_(&host), handle_(handle) {}
    HidDevice(HidDevice&& other) noexcept;
    HidDevice& operator=(HidDevice&& other) noexcept;
    HidDevice(const HidDevice&) = delete;
    HidDevice& operator=(const HidDevice&) = delete;
    ~HidDevice() { Close(); }

    [[nodiscard]] bool Write(const platform::Report& report) { return host_->WriteReport(handle_, report); }
    [[nodiscard]] bool Read(platform::Report& report) { return host_->ReadReport(handle_, report); }
    void Cancel() { host_->Cancel(handle_); }
    void Close();

  private:
    platform::HidHost* host_ = nullptr;
    platform::HidHandle handle_ = -1;
};

/// What a search came to.
struct TransmitterSearch {
    bool found = false;
    /// Where nothing was found: why a transmitter that is there could not be opened.
    std::optional<platform::OpenOutcome> obstacle;
};

/// Searches the interfaces in their order and opens the first transmitter. If one is found, `device` is the
/// open device and `vendorId`, `productId` are its identity; all three are unchanged otherwise. Interfaces
/// that can't be opened are passed over.
[[nodiscard]] TransmitterSearch OpenTransmitter(platform::HidHost& host, HidDevice& device,
                                                std::int32_t& vendorId, std::int32_t& productId);

/// The same search, of which only the answer and the identity are wanted; it leaves nothing open.
[[nodiscard]] TransmitterSearch LocateTransmitter(platform::HidHost& host, std::int32_t& vendorId,
                                                  std::int32_t& productId);

}  // namespace vento
