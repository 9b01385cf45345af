#include "simulator/simulated_hid_host.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace vento::simulator {

using platform::HidHandle;
using platform::OpenAnswer;
using platform::OpenOutcome;
using platform::Report;
using platform::ReportTransfer;

namespace {

const std::string kPathPrefix = "simulated/";

}  // namespace

SimulatedHidHost::SimulatedHidHost(const Scenario& scenario, platform::Clock& clock)
    : clock_(clock), perReport_(scenario.perReport), faults_(scenario.faults) {
    if (scenario.remote) {
        remote_.emplace(*scenario.remote);
        if (!scenario.image.empty()) image_.emplace(scenario.image, *remote_);
    }
    Remote* const remote = remote_ ? &*remote_ : nullptr;
    devices_.reserve(scenario.interfaces.size());
    for (const SimulatedInterface& each : scenario.interfaces) {
        Device& device = devices_.emplace_back();
        device.identity = {.vendorId = each.vendorId, .productId = each.productId};
        device.opens = each.opens;
        if (const auto linkFactor = LinkFactorOf(each.vendorId)) {
            device.transmitter.emplace(*linkFactor, remote);
        }
    }
}

void SimulatedHidHost::Search(const std::function<bool(std::string_view path)>& visit) {
    ++cycle_;
    if (awayUntil_ && clock_.Now() >= *awayUntil_) awayUntil_.reset();
    const bool unplugged = faults_.Unplugs(cycle_, UnplugMoment::open);
    if (unplugged) GoAway(cycle_);
    plugged_ = !unplugged && !awayUntil_;
    for (std::size_t i = 0; i < devices_.size(); ++i) {
        if (IsListed(devices_[i]) && !visit(kPathPrefix + std::to_string(i + 1))) return;
    }
}

/// Notes until when the transmitter stays away, if a fault of this cycle says so.
void SimulatedHidHost::GoAway(std::uint64_t cycle) {
    if (const auto absence = faults_.Absence(cycle)) awayUntil_ = clock_.Now() + *absence;
}

bool SimulatedHidHost::IsListed(const Device& device) const {
    return plugged_ || !device.transmitter;
}

OpenAnswer SimulatedHidHost::Open(std::string_view path, platform::Wanted wanted) {
    std::size_t number = 0;
    if (path.starts_with(kPathPrefix)) {
        std::from_chars(path.data() + kPathPrefix.size(), path.data() + path.size(), number);
    }
    if (number == 0 || number > devices_.size() || !IsListed(devices_[number - 1])) return {};
    Device& device = devices_[number - 1];
    OpenAnswer answer{.outcome = OpenOutcome::foreign, .identity = device.identity};
    if (!device.transmitter || !wanted(device.identity)) return answer;
    if (!device.opens || faults_.Refuses(cycle_)) {
        answer.outcome = OpenOutcome::forbidden;
        return answer;
    }
    device.transmitter->Reset();
    device.isOpen = true;
    device.cycle = cycle_;
    device.writes = 0;
    answer.outcome = OpenOutcome::opened;
    answer.handle = static_cast<HidHandle>(number - 1);
    return answer;
}

platform::Presence SimulatedHidHost::Detect(platform::Wanted wanted) {
    using platform::Presence;
    const bool isAway = awayUntil_ && clock_.Now() < *awayUntil_;
    if (isAway || faults_.Unplugs(cycle_ + 1, UnplugMoment::open)) return Presence::absent;
    Presence found = Presence::absent;
    for (const Device& device : devices_) {
        if (!device.transmitter || !wanted(device.identity)) continue;
        if (device.opens && !faults_.Refuses(cycle_ + 1)) return Presence::ready;
        found = Presence::forbidden;
    }
    return found;
}

SimulatedHidHost::Device* SimulatedHidHost::OpenDevice(HidHandle handle) {
    if (handle < 0) return nullptr;
    const auto index = static_cast<std::size_t>(handle);
    return index < devices_.size() && devices_[index].isOpen ? &devices_[index] : nullptr;
}

ReportTransfer SimulatedHidHost::Write(HidHandle handle, const Report& report) {
    Device* const device = OpenDevice(handle);
    if (device == nullptr || faults_.FailsWrite(device->cycle, ++device->writes)) return {};
    LetReportPass();
    device->transmitter->Take(std::span(report).subspan<1>());
    return {.whole = true, .error = 0, .bytes = report.size()};
}

ReportTransfer SimulatedHidHost::Read(HidHandle handle, Report& report) {
    Device* const device = OpenDevice(handle);
    if (device == nullptr) return {};
    std::optional<Payload> payload = device->transmitter->Give();
    faults_.Alter(device->cycle, payload);
    if (!payload || faults_.FailsRead(device->cycle)) return {};
    LetReportPass();
    report[0] = 0;
    std::ranges::copy(*payload, report.begin() + 1);
    return {.whole = true, .error = 0, .bytes = payload->size()};
}

void SimulatedHidHost::LetReportPass() {
    if (perReport_.count() > 0) clock_.Sleep(perReport_);
}

void SimulatedHidHost::Close(HidHandle handle) {
    Device* const device = OpenDevice(handle);
    if (device == nullptr) return;
    device->transmitter->Reset();
    device->isOpen = false;
    GoAway(device->cycle);
}

void SimulatedHidHost::SaveImage() {
    if (image_) image_->Save();
}

const Transmitter* SimulatedHidHost::TransmitterAt(std::size_t index) const {
    const std::optional<Transmitter>& transmitter = devices_.at(index).transmitter;
    return transmitter ? &*transmitter : nullptr;
}

}  // namespace vento::simulator
