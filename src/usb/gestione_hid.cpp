#include "usb/gestione_hid.h"

#include <utility>

namespace vento {

using platform::HidHost;
using platform::OpenOutcome;

bool IsTransmitter(platform::HidIdentity identity) {
    return identity.vendorId == kFirstKindVendor || identity.vendorId == kSecondKindVendor;
}

HidDevice::HidDevice(HidDevice&& other) noexcept
    : host_(std::exchange(other.host_, nullptr)), handle_(std::exchange(other.handle_, -1)) {}

HidDevice& HidDevice::operator=(HidDevice&& other) noexcept {
    if (this != &other) {
        Close();
        host_ = std::exchange(other.host_, nullptr);
        handle_ = std::exchange(other.handle_, -1);
    }
    return *this;
}

void HidDevice::Close() {
    if (host_ != nullptr) std::exchange(host_, nullptr)->Close(std::exchange(handle_, -1));
}

TransmitterSearch OpenTransmitter(HidHost& host, HidDevice& device, std::int32_t& vendorId,
                                  std::int32_t& productId) {
    TransmitterSearch search;
    host.BeginSearch();
    while (!search.found && host.NextInterface()) {
        const platform::OpenAnswer answer = host.OpenInterface(IsTransmitter);
        if (answer.outcome == OpenOutcome::opened) {
            device = HidDevice(host, answer.handle);
            const platform::HidIdentity identity = answer.identity.value();
            vendorId = identity.vendorId;
            productId = identity.productId;
            search.found = true;
        } else if (answer.identity && IsTransmitter(*answer.identity) && !search.obstacle) {
            search.obstacle = answer.outcome;
        }
    }
    host.EndSearch();
    if (search.found) search.obstacle.reset();
    return search;
}

TransmitterSearch LocateTransmitter(HidHost& host, std::int32_t& vendorId, std::int32_t& productId) {
    HidDevice device;
    return OpenTransmitter(host, device, vendorId, productId);
}

}  // namespace vento
