#include "desktop/win32/detecting_hid_host.h"

#include <optional>

#include "platform/windows/hid_host.h"

namespace vento::desktop::win32 {
namespace {

using platform::OpenOutcome;
using platform::Presence;

Presence PresenceFor(OpenOutcome outcome) {
    switch (outcome) {
        case OpenOutcome::opened:
            return Presence::ready;
        case OpenOutcome::forbidden:
            return Presence::forbidden;
        case OpenOutcome::busy:
        case OpenOutcome::held:
            return Presence::inUse;
        case OpenOutcome::foreign:
        case OpenOutcome::noBandwidth:
        case OpenOutcome::failed:
            break;
    }
    return Presence::absent;
}

}  // namespace

Presence DetectingHidHost::Detect(platform::Wanted wanted) {
    if (const Presence told = ForwardingHidHost::Detect(wanted); told != Presence::unknown) return told;
    Presence found = Presence::absent;
    Search([&](std::string_view path) {
        const std::optional<platform::HidIdentity> identity = platform::IdentityInPath(path);
        if (!identity || !wanted(*identity)) return true;
        const platform::OpenAnswer answer = Open(path, wanted);
        if (answer.outcome == OpenOutcome::opened) Close(answer.handle);
        const Presence one = PresenceFor(answer.outcome);
        if (found == Presence::absent || one == Presence::ready) found = one;
        return found != Presence::ready;
    });
    return found;
}

}  // namespace vento::desktop::win32
