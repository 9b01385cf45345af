#include "usb/report_exchange.h"

#include <algorithm>

namespace vento {

using platform::kReportPayload;
using platform::Report;

const Exchange& ExchangeReports(Link& link, std::span<const std::uint8_t> frame,
                                std::span<std::uint8_t> reply) {
    std::ranges::fill(reply, std::uint8_t{0});
    Exchange& exchange = link.latest = {};
    HidDevice device;
    exchange.transmitterFound = OpenTransmitter(link, device).found;
    if (!exchange.transmitterFound) return exchange;
    exchange.written = WriteReports(device, frame);
    if (exchange.written) exchange.reportsRead = ReadReports(device, reply);
    link.reportsRead += exchange.reportsRead;
    device.Cancel();
    return exchange;  // the device is closed here
}

bool WriteReports(HidDevice& device, std::span<const std::uint8_t> buffer) {
    Report report{};
    while (!buffer.empty()) {
        const auto part = buffer.first(std::min(buffer.size(), kReportPayload));
        std::ranges::copy(part, report.begin() + 1);
        if (!device.Write(report)) return false;
        buffer = buffer.subspan(part.size());
    }
    return true;
}

std::size_t ReadReports(HidDevice& device, std::span<std::uint8_t> buffer) {
    Report report{};
    std::size_t reports = 0;
    while (!buffer.empty() && device.Read(report)) {
        ++reports;
        const std::size_t count = std::min(buffer.size(), kReportPayload);
        std::copy_n(report.begin() + 1, count, buffer.begin());
        buffer = buffer.subspan(count);
    }
    return reports;
}

}  // namespace vento
