#include "device/scenario_server.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <system_error>
#include <variant>

#include "storage/json.h"

namespace vento::device {

using simulator::UnplugMoment;
using std::chrono::milliseconds;
using storage::ContentError;

namespace {

constexpr std::chrono::seconds kPlaceBound{5};
constexpr milliseconds kPlacePause{2};
/// A frame whose rest does not come within this time never will: who sent it has been interrupted.
constexpr std::chrono::seconds kFrameBound{1};

/// Who may open a device of the kernel is not for the device to say.
void RefuseWhatTheKernelDecides(const simulator::Scenario& scenario) {
    for (const simulator::Fault& each : scenario.faults) {
        if (std::holds_alternative<simulator::fault::Refused>(each.kind)) {
            throw ContentError(
                Phrase{"faults: un dispositivo del kernel non offre \"refused\"; togliere invece l'accesso "
                       "al suo nodo",
                       "faults: \"refused\" is not offered by a device of the kernel; take the access to its "
                       "node away instead"});
        }
    }
    for (const simulator::SimulatedInterface& each : scenario.interfaces) {
        if (!each.opens) {
            throw ContentError(
                Phrase{"interfaces: un dispositivo del kernel non offre \"opens\": false; togliere invece "
                       "l'accesso al suo nodo",
                       "interfaces: \"opens\": false is not offered by a device of the kernel; take the "
                       "access to its node away instead"});
        }
    }
}

}  // namespace

ScenarioServer::ScenarioServer(const simulator::Scenario& scenario, Port port, platform::Clock& clock,
                               std::ostream& log)
    : port_(std::move(port)),
      clock_(clock),
      log_(log),
      perReport_(scenario.perReport),
      faults_(scenario.faults) {
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

/// It takes the kernel a moment. To wait for it keeps the devices in the scenario's order.
void ScenarioServer::PlugIn(Device& device) {
    const auto index = static_cast<std::size_t>(
        std::ranges::find(devices_, &device, [](const Device& each) { return &each; }) - devices_.begin());
    device.kernel = port_.plugIn(index, device.identity);
    const auto deadline = clock_.Now() + kPlaceBound;
    auto place = device.kernel->Place();
    for (; !place && clock_.Now() < deadline; place = device.kernel->Place())
        clock_.Sleep(kPlacePause);
    if (!place && !port_.hostMayBeAbsent) {
        throw std::system_error(ENODEV, std::generic_category(),
                                "The kernel has made no hidraw node; is its module hid-generic there?");
    }
    log_ << place.value_or("no computer has taken it yet")
         << (device.transmitter ? ": transmitter, vendor id " : ": vendor id ") << device.identity.vendorId
         << ", product id " << device.identity.productId << '\n'
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
        if (!device.kernel) continue;
        const short events = device.replies.empty() ? POLLIN : POLLIN | POLLOUT;
        waiting.push_back({.fd = device.kernel->Descriptor(), .events = events, .revents = 0});
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
        if (!device.kernel->Send(device.replies.front())) return;
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
        case DeviceEvent::Kind::output:
            HandleReport(device, event);
            break;
        case DeviceEvent::Kind::closed:
            Forget(device);
            break;
    }
}

/// Drops a frame that is not complete and the replies that were not fetched.
void ScenarioServer::Forget(Device& device) {
    device.transmitter->Reset();
    device.replies.clear();
    device.reportsToCome = 0;
}

void ScenarioServer::BeginFrame(Device& device, std::uint8_t lengthByte) {
    Forget(device);
    device.cycle = ++cycle_;
    device.reports = 0;
    constexpr std::size_t kPart = platform::kReportPayload;
    device.reportsToCome = std::max<std::size_t>((lengthByte + kPart - 1) / kPart, 1);
}

void ScenarioServer::HandleReport(Device& device, const DeviceEvent& event) {
    if (event.report.size() != platform::Report{}.size() || event.report.front() != 0) return;
    const auto now = clock_.Now();
    if (now - device.last > kFrameBound) device.reportsToCome = 0;
    device.last = now;
    if (device.reportsToCome == 0) BeginFrame(device, event.report[1]);
    --device.reportsToCome;
    if (faults_.Unplugs(device.cycle, UnplugMoment::open)) {
        Unplug(device.cycle);
        return;
    }
    if (faults_.FailsWrite(device.cycle, ++device.reports)) return;
    LetReportPass();
    device.transmitter->Take(std::span(event.report).subspan(1).first<platform::kReportPayload>());
    const bool isWhole = device.reportsToCome == 0;
    if (faults_.Unplugs(device.cycle, UnplugMoment::write) ||
        (isWhole && faults_.Unplugs(device.cycle, UnplugMoment::read))) {
        Unplug(device.cycle);
        return;
    }
    while (auto reply = device.transmitter->Give()) {
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
        Forget(device);
        device.kernel.reset();
    }
    log_ << "unplugged at frame " << cycle << '\n' << std::flush;
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

}  // namespace vento::device
