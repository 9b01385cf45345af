#include "uhid/scenario_server.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <system_error>
#include <variant>

#include "simulator/scenario_error.h"

namespace vento::uhid {

using simulator::ScenarioError;
using simulator::UnplugMoment;
using std::chrono::milliseconds;

namespace {

constexpr std::chrono::seconds kNodeBound{5};
constexpr milliseconds kNodePause{2};

/// Who may open a device of the kernel is not for the device to say.
void RefuseWhatTheKernelDecides(const simulator::Scenario& scenario) {
    for (const simulator::Fault& each : scenario.faults) {
        if (std::holds_alternative<simulator::fault::Refused>(each.kind)) {
            throw ScenarioError(
                "faults: \"refused\" is not offered by a device of the kernel; take the access "
                "to its node away instead");
        }
    }
    for (const simulator::SimulatedInterface& each : scenario.interfaces) {
        if (!each.opens) {
            throw ScenarioError(
                "interfaces: \"opens\": false is not offered by a device of the kernel; take "
                "the access to its node away instead");
        }
    }
}

}  // namespace

ScenarioServer::ScenarioServer(const simulator::Scenario& scenario, platform::Clock& clock, std::ostream& log)
    : clock_(clock), log_(log), perReport_(scenario.perReport), faults_(scenario.faults) {
    RefuseWhatTheKernelDecides(scenario);
    if (scenario.remote) {
        remote_.emplace(*scenario.remote);
        if (!scenario.image.empty()) image_.emplace(scenario.image, *remote_);
    }
    simulator::Remote* const remote = remote_ ? &*remote_ : nullptr;
    for (const simulator::SimulatedInterface& each : scenario.interfaces) {
        Device& device = devices_.emplace_back();
        device.identity = {.vendorId = each.vendorId, .productId = each.productId};
        if (const auto linkFactor = simulator::LinkFactorOf(each.vendorId)) {
            device.transmitter.emplace(*linkFactor, remote);
        }
    }
}

void ScenarioServer::PlugIn() {
    for (Device& device : devices_)
        PlugIn(device);
}

/// The kernel makes the node when it has a moment. To wait for it keeps the nodes in the scenario's order.
void ScenarioServer::PlugIn(Device& device) {
    device.kernel.emplace(device.identity);
    const auto deadline = clock_.Now() + kNodeBound;
    auto node = device.kernel->Node();
    for (; !node; node = device.kernel->Node()) {
        if (clock_.Now() >= deadline) {
            throw std::system_error(ENODEV, std::generic_category(),
                                    "The kernel has made no hidraw node; is its module hid-generic there?");
        }
        clock_.Sleep(kNodePause);
    }
    log_ << node->string() << (device.transmitter ? ": transmitter, vendor id " : ": vendor id ")
         << device.identity.vendorId << ", product id " << device.identity.productId << '\n'
         << std::flush;
}

void ScenarioServer::Run(int stop) {
    for (;;) {
        Wait(stop);
        pollfd stopping{.fd = stop, .events = POLLIN, .revents = 0};
        if (::poll(&stopping, 1, 0) > 0) return;
        if (backAt_ && clock_.Now() >= *backAt_) PlugInAgain();
        for (Device& device : devices_)
            Serve(device);
    }
}

/// Until there is an event, or `stop` is readable, or an unplugged device is due.
void ScenarioServer::Wait(int stop) {
    std::vector<pollfd> waiting{{.fd = stop, .events = POLLIN, .revents = 0}};
    for (const Device& device : devices_) {
        if (device.kernel)
            waiting.push_back({.fd = device.kernel->Descriptor(), .events = POLLIN, .revents = 0});
    }
    int timeout = -1;
    if (backAt_) {
        const auto left = std::chrono::ceil<milliseconds>(*backAt_ - clock_.Now()).count();
        timeout = static_cast<int>(std::max(left, std::int64_t{0}));
    }
    if (::poll(waiting.data(), waiting.size(), timeout) < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "poll");
    }
}

void ScenarioServer::Serve(Device& device) {
    HandleEvents(device);
    while (!device.replies.empty()) {
        LetReportPass();
        // A program that has given up in the meantime must not leave its reply to the next one.
        HandleEvents(device);
        if (device.replies.empty()) return;
        device.kernel->Send(device.replies.front());
        device.replies.pop_front();
    }
}

void ScenarioServer::HandleEvents(Device& device) {
    while (device.kernel) {
        const std::optional<DeviceEvent> event = device.kernel->NextEvent();
        if (!event) return;
        if (device.transmitter) Handle(device, *event);
    }
}

void ScenarioServer::Handle(Device& device, const DeviceEvent& event) {
    switch (event.kind) {
        case DeviceEvent::Kind::opened:
            HandleOpen(device);
            break;
        case DeviceEvent::Kind::output:
            HandleReport(device, event);
            break;
        case DeviceEvent::Kind::closed:
            device.transmitter->Reset();
            device.replies.clear();
            // A cycle that brought no report, or wanted none, is over, and the fault still holds.
            if (faults_.Unplugs(device.cycle, UnplugMoment::write) ||
                faults_.Unplugs(device.cycle, UnplugMoment::read)) {
                Unplug(device.cycle);
            }
            break;
    }
}

void ScenarioServer::HandleOpen(Device& device) {
    device.transmitter->Reset();
    device.replies.clear();
    device.cycle = ++cycle_;
    device.reports = 0;
    if (faults_.Unplugs(device.cycle, UnplugMoment::open)) Unplug(device.cycle);
}

void ScenarioServer::HandleReport(Device& device, const DeviceEvent& event) {
    if (event.report.size() != platform::Report{}.size() || event.report.front() != 0) return;
    if (faults_.FailsWrite(device.cycle, ++device.reports)) return;
    LetReportPass();
    device.transmitter->Take(std::span(event.report).subspan(1).first<platform::kReportPayload>());
    if (faults_.Unplugs(device.cycle, UnplugMoment::write)) {
        Unplug(device.cycle);
        return;
    }
    while (auto reply = device.transmitter->Give()) {
        if (faults_.Unplugs(device.cycle, UnplugMoment::read)) {
            Unplug(device.cycle);
            return;
        }
        faults_.Alter(device.cycle, reply);
        if (!faults_.FailsRead(device.cycle)) device.replies.push_back(*reply);
    }
}

void ScenarioServer::LetReportPass() {
    if (perReport_.count() > 0) clock_.Sleep(perReport_);
}

/// No transmitter is there any more; the foreign interfaces stay.
void ScenarioServer::Unplug(std::uint64_t cycle) {
    for (Device& device : devices_) {
        if (!device.transmitter) continue;
        device.transmitter->Reset();
        device.replies.clear();
        device.kernel.reset();
    }
    log_ << "unplugged at open " << cycle << '\n' << std::flush;
    if (const auto absence = faults_.Absence(cycle)) backAt_ = clock_.Now() + *absence;
}

void ScenarioServer::PlugInAgain() {
    backAt_.reset();
    for (Device& device : devices_) {
        if (!device.kernel) PlugIn(device);
    }
}

void ScenarioServer::SaveImage() {
    if (image_) image_->Save();
}

}  // namespace vento::uhid
