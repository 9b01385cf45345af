#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/hid_host.h"

/// Finding the transmitter among the HID interfaces of the machine. The search has no memory: it runs in full
/// before every frame, so that a transmitter may come and go between any two of them.
namespace vento {

/// How one exchange went. Whether a command has worked is told by its reply alone.
struct Exchange {
    bool transmitterFound = false;
    bool written = false;         ///< all reports of the frame went out
    std::size_t reportsRead = 0;  ///< whole input reports that came back
};

/// The way to the transmitter, from an operation's first search to its end: what every frame takes along.
///
/// It holds the host's conversation, in which the platform may keep what has to be kept that long. To the
/// logic nothing stays open between two frames.
struct Link {
    /// `hidHost` outlives the link. `wanted` tells transmitters from other devices.
    Link(platform::HidHost& hidHost, platform::Wanted wanted)
        : host(hidHost), isTransmitter(wanted), conversation(hidHost.Converse()) {}

    platform::HidHost& host;
    platform::Wanted isTransmitter;
    std::shared_ptr<platform::Conversation> conversation;  ///< null where the host keeps nothing

    std::uint16_t linkFactor = 1;  ///< rides in every frame for the remote, by the kind of transmitter
    std::int32_t vendorId = 0;     ///< of the transmitter that was opened latest, like productId
    std::int32_t productId = 0;

    Exchange latest{};              ///< how the latest exchange went
    std::uint64_t reportsRead = 0;  ///< in all exchanges so far
};

/// An open device; it is closed at the end of its owner's life.
class HidDevice {
  public:
    HidDevice() = default;
    HidDevice(platform::HidHost& host, platform::HidHandle handle) : host_(&host), handle_(handle) {}
    HidDevice& operator=(HidDevice&& other) noexcept {
        std::swap(host_, other.host_);
        std::swap(handle_, other.handle_);
        return *this;
    }
    HidDevice(HidDevice&&) = delete;
    HidDevice(const HidDevice&) = delete;
    HidDevice& operator=(const HidDevice&) = delete;
    ~HidDevice() { Close(); }

    [[nodiscard]] bool Write(const platform::Report& report) { return host_->Write(handle_, report).whole; }
    [[nodiscard]] bool Read(platform::Report& report) { return host_->Read(handle_, report).whole; }
    void Cancel() { host_->Cancel(handle_); }
    /// Does nothing to a device that is not open.
    void Close() {
        if (host_ != nullptr) std::exchange(host_, nullptr)->Close(handle_);
    }

  private:
    platform::HidHost* host_ = nullptr;
    platform::HidHandle handle_{};
};

/// What a search for the transmitter came to.
struct TransmitterSearch {
    bool found = false;
    /// Nothing was found, but there is a transmitter: why the first such could not be opened.
    std::optional<platform::OpenOutcome> obstacle;
};

/// Looks for the first transmitter that can be opened, and leaves it in `device`. If one is found its ids go
/// into `link`; they stay as they were otherwise.
[[nodiscard]] TransmitterSearch OpenTransmitter(Link& link, HidDevice& device);

/// The same for those who only want to know: nothing stays open.
[[nodiscard]] TransmitterSearch LocateTransmitter(Link& link);

}  // namespace vento
