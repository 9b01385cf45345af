#include "protocol/link_timing.h"

#include <cmath>

#include "usb/gestione_hid.h"
#include "usb/report_exchange.h"

namespace vento {
namespace {

constexpr LinkTimingSet kFirstKind{{2, 8, 38, 75, 188}, {2, 10, 150, 300}, 1};
constexpr LinkTimingSet kSecondKind{{2, 2, 18, 37, 93}, {2, 15, 300, 600}, 2};

// A frame for the transmitter itself, which does not answer.
bool Tell(platform::HidHost& host, std::span<const std::uint8_t> frame, std::int32_t& vendorId,
          std::int32_t& productId) {
    return ExchangeReports(host, vendorId, productId, frame, false, {}).transmitterFound;
}

}  // namespace

const LinkTimingSet& LinkTimingFor(std::int32_t vendorId) {
    return vendorId == kFirstKindVendor ? kFirstKind : kSecondKind;
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

bool SendLinkTiming(platform::HidHost& host, const LinkTimingSet& timing, std::int32_t& vendorId,
                    std::int32_t& productId) {
    return Tell(host, BuildTimingFrame(timing).Bytes(), vendorId, productId);
}

void SendFrameR(platform::HidHost& host, const LinkTimingSet& timing, std::int32_t& vendorId,
                std::int32_t& productId) {
    static_cast<void>(SendLinkTiming(host, timing, vendorId, productId));
    constexpr std::array<std::uint8_t, 2> kFrame{2, static_cast<std::uint8_t>(FrameType::sendR)};
    Tell(host, kFrame, vendorId, productId);
}

void SendFrameQ(platform::HidHost& host, std::int32_t& vendorId, std::int32_t& productId) {
    constexpr std::array<std::uint8_t, 2> kFrame{1, static_cast<std::uint8_t>(FrameType::sendQ)};
    Tell(host, kFrame, vendorId, productId);
}

}  // namespace vento
