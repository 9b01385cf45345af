#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/hid_host.h"
#include "protocol/frame.h"
#include "usb/report_exchange.h"

namespace vento {

/// What comes back for a frame: the transmitter's status (0 is good), then the remote's bytes. A write or
/// read that failed leaves zeros.
using Reply = std::array<std::uint8_t, 9>;

/// What every command of the remote takes along.
struct Link {
    platform::HidHost& host;
    std::uint16_t linkFactor =
        1;                      ///< rides in every frame for the remote: 1 or 2, by the kind of transmitter
    std::int32_t vendorId = 0;  ///< of the transmitter that took the latest frame, like productId
    std::int32_t productId = 0;

    std::uint64_t reportsRead = 0;  ///< over this link so far
    Exchange latest{};              ///< how the latest exchange went
};

/// `ExchangeReports` over a link, noting how it went. `reply` is zeroed first.
const Exchange& ExchangeOver(Link& link, const Frame& frame, bool wantReply, std::span<std::uint8_t> reply);

/// How the latest exchange over the link went, for a diagnostic: "status 1, first byte 0", "no reply came", …
[[nodiscard]] std::string DescribeLatest(const Link& link, const Reply& reply);

}  // namespace vento
