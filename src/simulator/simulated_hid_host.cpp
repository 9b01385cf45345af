#include "simulator/simulated_hid_host.h"

#include <algorithm>

namespace vento::simulator {

using platform::HidHandle;
using platform::OpenAnswer;
using platform::OpenOutcome;
using platform::Report;

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

void SimulatedHidHost::BeginSearch() {
    ++cycle_;
    next_ = 0;
    if (awayUntil_ && clock_.Now() >= *awayUntil_) awayUntil_.reset();
    const bool unplugged = faults_.Unplugs(cycle_, UnplugMoment::open);
    if (unplugged) GoAway(cycle_);
    plugged_ = !unplugged && !awayUntil_;
}

/// Notes until when the transmitter stays away, if a fault of this cycle says so.
void SimulatedHidHost::GoAway(std::uint64_t cycle) {
    if (const auto absence = faults_.Absence(cycle)) awayUntil_ = clock_.Now() + *absence;
}

bool SimulatedHidHost::IsListed(const Device& device) const {
    return plugged_ || !device.transmitter;
}

bool SimulatedHidHost::NextInterface() {
    while (next_ < devices_.size()) {
        ++next_;
        if (IsListed(devices_[next_ - 1])) return true;
    }
    return false;
}

std::string SimulatedHidHost::InterfaceName() const {
    return "simulated/" + std::to_string(next_);
}

OpenAnswer SimulatedHidHost::OpenInterface(bool (*wanted)(platform::HidIdentity)) {
    if (next_ == 0) return {};
    Device& device = devices_[next_ - 1];
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
    answer.handle = static_cast<HidHandle>(next_ - 1);
    return answer;
}

SimulatedHidHost::Device* SimulatedHidHost::OpenDevice(HidHandle handle) {
    if (handle < 0) return nullptr;
    const auto index = static_cast<std::size_t>(handle);
    return index < devices_.size() && devices_[index].isOpen ? &devices_[index] : nullptr;
}

bool SimulatedHidHost::WriteReport(HidHandle handle, const Report& report) {
    Device* const device = OpenDevice(handle);
    if (device == nullptr || faults_.FailsWrite(device->cycle, ++device->writes)) return false;
    LetReportPass();
    device->transmitter->Take(std::span(report).subspan<1>());
    return true;
}

bool SimulatedHidHost::ReadReport(HidHandle handle, Report& report) {
    Device* const device = OpenDevice(handle);
    if (device == nullptr) return false;
    std::optional<Payload> payload = device->transmitter->Give();
    faults_.Alter(device->cycle, payload);
    if (!payload || faults_.FailsRead(device->cycle)) return false;
    LetReportPass();
    report[0] = 0;
    std::ranges::copy(*payload, report.begin() + 1);
    return true;
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

std::string SimulatedHidHost::Advice(OpenOutcome outcome, Language language) const {
    const bool italian = language == Language::italian;
    if (outcome == OpenOutcome::forbidden) {
        return italian
                   ? "Lo scenario della simulazione vieta di aprire il trasmettitore: \"opens\" vale false "
                     "oppure un guasto \"refused\" copre questa ricerca."
                   : "The scenario of the simulation does not let the transmitter be opened: its \"opens\" "
                     "is false, or a fault \"refused\" covers this search.";
    }
    return italian ? "Il trasmettitore simulato non si apre." : "The simulated transmitter does not open.";
}

void SimulatedHidHost::SaveImage() {
    if (image_) image_->Save();
}

const Transmitter* SimulatedHidHost::TransmitterAt(std::size_t index) const {
    const std::optional<Transmitter>& transmitter = devices_.at(index).transmitter;
    return transmitter ? &*transmitter : nullptr;
}

}  // namespace vento::simulator
