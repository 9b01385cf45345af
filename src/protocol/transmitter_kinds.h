#pragma once

#include <array>
#include <cstdint>

#include "platform/hid_host.h"
#include "protocol/frame.h"
#include "text/language.h"
#include "usb/gestione_hid.h"

namespace vento {

/// The fixed parameters of one kind of transmitter, which are opaque to this program.
struct LinkTimingSet {
    std::array<std::uint8_t, 5> timingBytes;
    /// 0: scaled into a byte, 0 to 7. 1: a spread in percent. 2, 3: nominal values, sent as the limits that
    /// the spread gives; value times spread fits 16 signed bits.
    std::array<std::int16_t, 4> timingWords;
    std::uint16_t linkFactor;
};

/// A kind of transmitter, told by its vendor id; any product of that vendor is taken for one.
struct TransmitterKind {
    std::uint16_t vendorId;
    Phrase name;
    LinkTimingSet timing;
};

/// All kinds. A new one is a row here, and one in the rule that lets users open it.
inline constexpr std::array kTransmitterKinds{
    TransmitterKind{1240, {"primo tipo", "first kind"}, {{2, 8, 38, 75, 188}, {2, 10, 150, 300}, 1}},
    TransmitterKind{11025, {"secondo tipo", "second kind"}, {{2, 2, 18, 37, 93}, {2, 15, 300, 600}, 2}},
};

[[nodiscard]] bool IsTransmitter(platform::HidIdentity identity);

/// The kind with this vendor id; the last one for an id that no kind has.
[[nodiscard]] const TransmitterKind& KindFor(std::int32_t vendorId);

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

/// Sends the `TimingFrame`; true if it went to a transmitter. There is no reply.
[[nodiscard]] bool SendLinkTiming(Link& link, const LinkTimingSet& timing);

/// Sends the `TimingFrame` and then the two bytes 2, 'R', each in a cycle of its own.
void SendFrameR(Link& link, const LinkTimingSet& timing);

/// Sends the two bytes 1, 'Q'. The first is a length byte that does not count itself.
void SendFrameQ(Link& link);

}  // namespace vento
