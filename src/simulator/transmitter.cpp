#include "simulator/transmitter.h"

#include <algorithm>

namespace vento::simulator {

namespace {

constexpr std::uint8_t kFrameQ = 'Q';
constexpr std::uint8_t kFrameR = 'R';
constexpr std::uint8_t kTimingFrame = 'T';
constexpr std::uint8_t kRemoteFrame = 'U';

/// The one frame whose length byte is not its length.
constexpr std::uint8_t kFrameQLengthByte = 1;

/// Bytes of a frame for the remote besides its send bytes.
constexpr std::size_t kRemoteFrameRest = 6;

constexpr std::uint8_t kGood = 0;
constexpr std::uint8_t kRefused = 1;

template <std::size_t size>
void Keep(std::span<const std::uint8_t> frame, std::optional<std::array<std::uint8_t, size>>& kept) {
    if (frame.size() != size) return;
    kept.emplace();
    std::ranges::copy(frame, kept->begin());
}

}  // namespace

std::optional<std::uint16_t> LinkFactorOf(std::uint16_t vendorId) {
    switch (vendorId) {
        case 1240:
            return std::uint16_t{1};
        case 11025:
            return std::uint16_t{2};
        default:
            return std::nullopt;
    }
}

void Transmitter::Reset() {
    receivedSize_ = 0;
    queued_ = 0;
}

void Transmitter::Take(std::span<const std::uint8_t, platform::kReportPayload> payload) {
    std::ranges::copy(payload, received_.begin() + static_cast<std::ptrdiff_t>(receivedSize_));
    receivedSize_ += payload.size();
    const std::size_t frameSize = FrameSize();
    if (receivedSize_ < frameSize) return;
    receivedSize_ = 0;
    HandleFrame(std::span(received_).first(frameSize));
}

std::size_t Transmitter::FrameSize() const {
    const bool isFrameQ = received_[0] == kFrameQLengthByte && received_[1] == kFrameQ;
    return isFrameQ ? ShortFrame{}.size() : received_[0];
}

void Transmitter::HandleFrame(std::span<const std::uint8_t> frame) {
    if (frame.size() < 2) return;
    switch (frame[1]) {
        case kFrameQ:
            if (frame[0] == kFrameQLengthByte) Keep(frame, frameQ_);
            break;
        case kFrameR:
            Keep(frame, frameR_);
            break;
        case kTimingFrame:
            Keep(frame, timingFrame_);
            break;
        case kRemoteFrame:
            if (frame.size() >= kRemoteFrameRest && frame.size() == frame[4] + kRemoteFrameRest) {
                HandleRemoteFrame(frame);
            }
            break;
        default:
            break;
    }
}

/// 0 length, 1 type, 2 and 3 LinkFactor (low byte first), 4 count of send bytes, send bytes, count of reply
/// bytes.
void Transmitter::HandleRemoteFrame(std::span<const std::uint8_t> frame) {
    const unsigned factor = frame[2] + 256U * frame[3];
    const unsigned pace = factor % linkFactor_ == 0 ? factor / linkFactor_ : 0;
    const std::size_t replyCount = frame.back();

    Payload payload{};
    const auto reply = std::span(payload).subspan(1, std::min(replyCount, payload.size() - 1));
    const bool good = remote_ != nullptr && remote_->Receive(frame.subspan(5, frame[4]), pace, reply);
    payload[0] = good ? kGood : kRefused;
    if (replyCount > 0) Queue(payload);
}

void Transmitter::Queue(const Payload& payload) {
    if (queued_ == kQueueSize) return;
    queue_[(queueFront_ + queued_) % kQueueSize] = payload;
    ++queued_;
}

std::optional<Payload> Transmitter::Give() {
    if (queued_ == 0) return std::nullopt;
    const Payload& payload = queue_[queueFront_];
    queueFront_ = (queueFront_ + 1) % kQueueSize;
    --queued_;
    return payload;
}

}  // namespace vento::simulator
