#include "usb/gestione_hid.h"

namespace vento {

using platform::OpenOutcome;

TransmitterSearch OpenTransmitter(Link& link, HidDevice& device) {
    struct {
        Link& link;
        HidDevice& device;
        TransmitterSearch result;
    } search{link, device, {}};
    // One reference is all that it captures, so that no search takes memory from the heap.
    link.host.Search([&search](std::string_view path) {
        Link& way = search.link;
        const platform::OpenAnswer answer = way.host.Open(path, way.isTransmitter);
        if (answer.outcome == OpenOutcome::opened) {
            search.device = HidDevice(way.host, answer.handle);
            way.vendorId = answer.identity.value().vendorId;
            way.productId = answer.identity.value().productId;
            search.result = {.found = true, .obstacle = std::nullopt};
            return false;
        }
        const bool isObstacle =
            answer.outcome != OpenOutcome::foreign && answer.identity && way.isTransmitter(*answer.identity);
        if (isObstacle && !search.result.obstacle) {
            search.result.obstacle = answer.outcome;
        }
        return true;
    });
    return search.result;
}

TransmitterSearch LocateTransmitter(Link& link) {
    HidDevice device;
    return OpenTransmitter(link, device);
}

}  // namespace vento
