#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "usb/gestione_hid.h"

namespace vento {

/// One complete cycle: finds and opens the transmitter, writes `frame` (of any length) as 65-byte reports,
/// reads `reply`, cancels and closes. How it went is noted in `link` too.
///
/// `reply` says by its size, 0 to 256 bytes, how much is wanted; nothing is read for an empty one. It is
/// filled with zeros first, and what a failed write or read leaves out stays zero.
const Exchange& ExchangeReports(Link& link, std::span<const std::uint8_t> frame,
                                std::span<std::uint8_t> reply);

/// Cuts `buffer` into reports of 64 payload bytes and writes them; false as soon as one fails. The last
/// report carries behind the buffer's end what the one before it left there, and zeros if it is the only one.
[[nodiscard]] bool WriteReports(HidDevice& device, std::span<const std::uint8_t> buffer);

/// Fills `buffer` from as many reports as it takes and gives back their number. A failed read ends it; what
/// has come until then stays.
std::size_t ReadReports(HidDevice& device, std::span<std::uint8_t> buffer);

}  // namespace vento
