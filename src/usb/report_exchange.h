#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/hid_host.h"
#include "usb/gestione_hid.h"

namespace vento {

/// What became of one exchange. Whether a command has worked is told by its reply alone.
struct Exchange {
    bool transmitterFound = false;
    bool written = false;         ///< all reports of the frame went out
    std::size_t reportsRead = 0;  ///< whole input reports that came back
};

/// One complete cycle: finds and opens the transmitter, writes `frame` (of any length) as 65-byte reports,
/// reads `reply` if `wantReply` says so, cancels and closes.
///
/// `reply` has 1 to 256 bytes, zeros when it is handed over; it says by its size how much is wanted. What a
/// failed write or read leaves out stays zero. `vendorId` and `productId` are overwritten when a transmitter
/// is found.
Exchange ExchangeReports(platform::HidHost& host, std::int32_t& vendorId, std::int32_t& productId,
                         std::span<const std::uint8_t> frame, bool wantReply, std::span<std::uint8_t> reply);

/// Cuts `buffer` into reports of 64 payload bytes and writes them; false as soon as one fails. The last
/// report carries behind the buffer's end what the one before it left there, and zeros if it is the only one.
[[nodiscard]] bool WriteReports(HidDevice& device, std::span<const std::uint8_t> buffer);

/// Fills `buffer` from as many reports as it takes and gives back their number. A failed read ends it; what
/// has come until then stays.
std::size_t ReadReports(HidDevice& device, std::span<std::uint8_t> buffer);

}  // namespace vento
