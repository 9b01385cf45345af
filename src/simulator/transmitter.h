#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/hid_host.h"
#include "simulator/remote.h"

namespace vento::simulator {

/// What a report carries behind its id.
using Payload = std::array<std::uint8_t, platform::kReportPayload>;

/// The LinkFactor of a transmitter with this vendor id; nothing for a vendor of other devices.
[[nodiscard]] std::optional<std::uint16_t> LinkFactorOf(std::uint16_t vendorId);

/// The transmitter: payloads of output reports in, payloads of input reports out.
///
/// It puts payloads together to frames. A frame for the remote goes on to the remote, and what that answers
/// is queued behind a status byte, 0 if all went well and 1 if not. A frame for the transmitter itself is
/// kept. Frames of another type, or whose length does not fit their type, are ignored.
class Transmitter {
  public:
    static constexpr std::size_t kTimingFrameSize = 19;
    /// So many unread input payloads are held; what comes on top is lost, as in a kernel's queue.
    static constexpr std::size_t kQueueSize = 64;

    using TimingFrame = std::array<std::uint8_t, kTimingFrameSize>;
    using ShortFrame = std::array<std::uint8_t, 2>;

    /// `remote` is what lies in front, null for nothing; it has to outlive the transmitter.
    Transmitter(std::uint16_t linkFactor, Remote* remote) : linkFactor_(linkFactor), remote_(remote) {}

    /// The device was opened, or closed: a frame that is not complete and all that is queued are dropped.
    void Reset();

    void Take(std::span<const std::uint8_t, platform::kReportPayload> payload);

    /// The next queued payload, which is then off the queue.
    [[nodiscard]] std::optional<Payload> Give();

    /// The last frames for the transmitter itself, as they came. Reset leaves them.
    [[nodiscard]] const std::optional<TimingFrame>& LastTimingFrame() const { return timingFrame_; }
    [[nodiscard]] const std::optional<ShortFrame>& LastFrameR() const { return frameR_; }
    [[nodiscard]] const std::optional<ShortFrame>& LastFrameQ() const { return frameQ_; }

  private:
    [[nodiscard]] std::size_t FrameSize() const;
    void HandleFrame(std::span<const std::uint8_t> frame);
    void HandleRemoteFrame(std::span<const std::uint8_t> frame);
    void Queue(const Payload& payload);

    std::uint16_t linkFactor_;
    Remote* remote_;
    std::array<std::uint8_t, 4 * platform::kReportPayload> received_{};  ///< a length byte says 255 at most
    std::size_t receivedSize_ = 0;
    std::array<Payload, kQueueSize> queue_{};
    std::size_t queueFront_ = 0;
    std::size_t queued_ = 0;
    std::optional<TimingFrame> timingFrame_;
    std::optional<ShortFrame> frameR_;
    std::optional<ShortFrame> frameQ_;
};

}  // namespace vento::simulator
