#include "platform/web/web_hid_host.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <vector>

#include "platform/web/script.h"
#include "platform/web/web.h"

namespace vento::platform {
namespace {

class OpenWhile final : public Conversation {
  public:
    OpenWhile() = default;
    OpenWhile(const OpenWhile&) = delete;
    OpenWhile& operator=(const OpenWhile&) = delete;
    OpenWhile(OpenWhile&&) = delete;
    OpenWhile& operator=(OpenWhile&&) = delete;
    ~OpenWhile() override { script::HidRelease(); }
};

constexpr unsigned kHalf = 16;

std::uint16_t Upper(std::uint32_t pair) {
    return static_cast<std::uint16_t>(pair >> kHalf);
}

std::uint16_t Lower(std::uint32_t pair) {
    return static_cast<std::uint16_t>(pair);
}

std::uint32_t DeviceOf(HidHandle handle) {
    return static_cast<std::uint32_t>(handle);
}

/// The granted interfaces that are plugged in.
std::vector<std::uint32_t> Present() {
    std::vector<std::uint32_t> present;
    while (const std::uint32_t device = script::HidAt(present.size()))
        present.push_back(device);
    return present;
}

/// Nothing for one that was unplugged.
std::optional<HidIdentity> IdentityOf(std::uint32_t device) {
    const std::uint32_t ids = script::HidIdentity(device);
    return ids == 0 ? std::nullopt : std::optional(HidIdentity{Upper(ids), Lower(ids)});
}

bool IsWanted(std::uint32_t device, const std::optional<HidIdentity>& identity, Wanted wanted) {
    return identity && wanted(*identity) && !script::HidIsSystemInput(device);
}

}  // namespace

std::shared_ptr<Conversation> WebHidHost::Converse() {
    std::shared_ptr<Conversation> conversation = conversation_.lock();
    if (!conversation) {
        conversation = std::make_shared<OpenWhile>();
        conversation_ = conversation;
    }
    return conversation;
}

void WebHidHost::Search(const std::function<bool(std::string_view path)>& visit) {
    for (const std::uint32_t device : Present()) {
        if (!visit(std::to_string(device))) return;
    }
}

OpenAnswer WebHidHost::Open(std::string_view path, Wanted wanted) {
    std::uint32_t device = 0;
    std::from_chars(path.data(), path.data() + path.size(), device);
    OpenAnswer answer{.outcome = OpenOutcome::failed, .identity = IdentityOf(device)};
    if (!answer.identity) return answer;
    if (!IsWanted(device, answer.identity, wanted)) {
        answer.outcome = OpenOutcome::foreign;
        return answer;
    }
    const script::Opened opened = script::HidOpen(device);
    forbidden_.erase(device);
    switch (opened) {
        case script::Opened::opened:
            answer.outcome = OpenOutcome::opened;
            answer.handle = static_cast<HidHandle>(device);
            break;
        case script::Opened::forbidden:
            answer.outcome = OpenOutcome::forbidden;
            forbidden_.insert(device);
            break;
        case script::Opened::held:
            answer.outcome = OpenOutcome::held;
            break;
        case script::Opened::failed:
            break;
    }
    return answer;
}

std::optional<ReportLengths> WebHidHost::Lengths(HidHandle device) {
    const std::uint32_t lengths = script::HidLengths(DeviceOf(device));
    return ReportLengths{.input = Upper(lengths), .output = Lower(lengths)};
}

Presence WebHidHost::Detect(Wanted wanted) {
    Presence found = Presence::absent;
    for (const std::uint32_t device : Present()) {
        if (!IsWanted(device, IdentityOf(device), wanted)) continue;
        const Presence one = forbidden_.contains(device)      ? Presence::forbidden
                             : script::HidIsElsewhere(device) ? Presence::inUse
                                                              : Presence::ready;
        if (one == Presence::ready) return one;
        if (found == Presence::absent) found = one;
    }
    return found;
}

ReportTransfer WebHidHost::Write(HidHandle device, const Report& report) {
    const bool whole = script::HidWrite(DeviceOf(device), report.data() + 1);
    return {.whole = whole, .error = 0, .bytes = whole ? report.size() : 0};
}

ReportTransfer WebHidHost::Read(HidHandle device, Report& report) {
    std::array<std::uint8_t, kReportPayload> payload{};
    const std::size_t count = script::HidRead(DeviceOf(device), payload.data());
    const bool whole = count == payload.size();
    if (whole) std::ranges::copy(payload, report.begin() + 1);
    return {.whole = whole, .error = 0, .bytes = count};
}

void WebHidHost::Close(HidHandle /*device*/) {
    if (conversation_.expired()) script::HidRelease();
}

bool RequestDevices(std::span<const std::uint16_t> vendorIds) {
    return script::HidRequest(vendorIds.data(), vendorIds.size());
}

}  // namespace vento::platform
