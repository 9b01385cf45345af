#include "protocol/transmitter_kinds.h"

#include <algorithm>
#include <cmath>

#include "usb/report_exchange.h"

namespace vento {
namespace {

// A frame for the transmitter itself, which does not answer. True if there was a transmitter.
bool SendUnanswered(Link& link, std::span<const std::uint8_t> frame) {
    return ExchangeReports(link, frame, {}).transmitterFound;
}

// Null for an id that no kind has.
const TransmitterKind* FindKind(std::int32_t vendorId) {
    const auto* const found = std::ranges::find(kTransmitterKinds, vendorId, &TransmitterKind::vendorId);
    return found != kTransmitterKinds.end() ? found : nullptr;
}

}  // namespace

bool IsTransmitter(platform::HidIdentity identity) {
    return FindKind(identity.vendorId) != nullptr;
}

const TransmitterKind& KindFor(std::int32_t vendorId) {
    const TransmitterKind* const found = FindKind(vendorId);
    return found != nullptr ? *found : kTransmitterKinds.back();
}

std::int16_t PercentOf(std::int16_t value, std::int16_t percent) {
    // nearbyint rounds halves to even in the default rounding mode, and hundredths never round into a half.
    return static_cast<std::int16_t>(std::nearbyint(value * percent / 100.0));
}

Frame BuildTimingFrame(const LinkTimingSet& timing) {
    Frame frame;
    frame.Append(19);
    frame.Append(static_cast<std::uint8_t>(FrameType::timing));
    frame.Append(15);
    frame.Append(timing.timingBytes[0]);
    frame.Append(2);
    frame.Append(timing.timingBytes[1]);
    frame.Append(4);
    frame.Append(static_cast<std::uint8_t>(timing.timingWords[0] * 16 + 136));
    frame.Append(timing.timingBytes[2]);
    frame.Append(timing.timingBytes[3]);
    frame.Append(timing.timingBytes[4]);
    for (const std::int16_t nominal : {timing.timingWords[2], timing.timingWords[3]}) {
        const std::int16_t spread = PercentOf(nominal, timing.timingWords[1]);
        frame.AppendLowFirst(static_cast<std::uint16_t>(nominal - spread));
        frame.AppendLowFirst(static_cast<std::uint16_t>(nominal + spread));
    }
    return frame;
}

bool SendLinkTiming(Link& link, const LinkTimingSet& timing) {
    return SendUnanswered(link, BuildTimingFrame(timing).Bytes());
}

void SendFrameR(Link& link, const LinkTimingSet& timing) {
    static_cast<void>(SendLinkTiming(link, timing));
    constexpr std::array<std::uint8_t, 2> kFrame{2, static_cast<std::uint8_t>(FrameType::sendR)};
    SendUnanswered(link, kFrame);
}

void SendFrameQ(Link& link) {
    constexpr std::array<std::uint8_t, 2> kFrame{1, static_cast<std::uint8_t>(FrameType::sendQ)};
    SendUnanswered(link, kFrame);
}

}  // namespace vento
