#include "protocol/link.h"

#include <algorithm>

namespace vento {

const Exchange& ExchangeOver(Link& link, const Frame& frame, bool wantReply, std::span<std::uint8_t> reply) {
    std::ranges::fill(reply, std::uint8_t{0});
    link.latest = ExchangeReports(link.host, link.vendorId, link.productId, frame.Bytes(), wantReply, reply);
    link.reportsRead += link.latest.reportsRead;
    return link.latest;
}

std::string DescribeLatest(const Link& link, const Reply& reply) {
    if (!link.latest.transmitterFound) return "no transmitter was found";
    if (!link.latest.written) return "the transmitter did not take the report";
    if (link.latest.reportsRead == 0) return "no reply came";
    return "the reply had status " + std::to_string(reply[0]) + " and first byte " + std::to_string(reply[1]);
}

}  // namespace vento
