#pragma once

#include <array>
#include <cstdint>

#include "platform/hid_host.h"
#include "protocol/frame.h"

namespace vento {

/// The fixed parameters of one kind of transmitter. What each means is the transmitter's business.
struct LinkTimingSet {
    std::array<std::uint8_t, 5> timingBytes;
    /// 0: scaled into a byte, 0 to 7. 1: a spread in percent. 2, 3: nominal values, sent as the limits that
    /// the spread gives; value times spread fits 16 signed bits.
    std::array<std::int16_t, 4> timingWords;
    std::uint16_t linkFactor;
};

/// The set for a vendor id: 1240 has its own, any other has that of the second kind.
[[nodiscard]] const LinkTimingSet& LinkTimingFor(std::int32_t vendorId);

/// `value` times `percent` divided by 100, rounded to the nearest whole number, halves to the even one. The
/// product has to fit 16 signed bits.
[[nodiscard]] std::int16_t PercentOf(std::int16_t value, std::int16_t percent);

/// The 19 bytes of the `TimingFrame`:
///
///   0   1    2   3         4  5         6  7                  8 .. 10       11 .. 14        15 .. 18
///   19  'T'  15  bytes[0]  2  bytes[1]  4  136 + 16 words[0]  bytes[2..4]   limits, words 2  limits, words 3
///
/// The limits of a nominal value are the lower and the upper one, each 16 bits with the low byte first.
[[nodiscard]] Frame BuildTimingFrame(const LinkTimingSet& timing);

/// Sends the `TimingFrame`; true if it went to a transmitter. There is no reply. Overwrites the two ids.
[[nodiscard]] bool SendLinkTiming(platform::HidHost& host, const LinkTimingSet& timing,
                                  std::int32_t& vendorId, std::int32_t& productId);

/// Sends the `TimingFrame` and then the two bytes 2, 'R', each in a cycle of its own.
void SendFrameR(platform::HidHost& host, const LinkTimingSet& timing, std::int32_t& vendorId,
                std::int32_t& productId);

/// Sends the two bytes 1, 'Q'. The first is a length byte that does not count itself.
void SendFrameQ(platform::HidHost& host, std::int32_t& vendorId, std::int32_t& productId);

}  // namespace vento
