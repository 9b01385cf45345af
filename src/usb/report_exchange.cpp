#include "usb/report_exchange.h"

#include <algorithm>

namespace vento {

using platform::kReportPayload;
using platform::Report;

Exchange ExchangeReports(platform::HidHost& host, std::int32_t& vendorId, std::int32_t& productId,
                         std::span<const std::uint8_t> frame, bool wantReply, std::span<std::uint8_t> reply) {
    Exchange exchange;
    HidDevice device;
    exchange.transmitterFound = OpenTransmitter(host, device, vendorId, productId).found;
    if (!exchange.transmitterFound) return exchange;
    exchange.written = WriteReports(device, frame);
    if (exchange.written && wantReply) exchange.reportsRead = ReadReports(device, reply);
    device.Cancel();
    device.Close();
    return exchange;
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
