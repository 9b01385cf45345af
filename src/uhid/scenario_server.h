#pragma once

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <optional>
#include <vector>

#include "platform/clock.h"
#include "simulator/faults.h"
#include "simulator/image.h"
#include "simulator/remote.h"
#include "simulator/scenario.h"
#include "simulator/transmitter.h"
#include "uhid/uhid_device.h"

namespace vento::uhid {

/// Puts the HID interfaces of a scenario into the kernel and serves them.
///
/// A cycle, in which the scenario's faults apply, is an open of a transmitter. A fault in writing cannot
/// reach the program that writes: the report is lost instead, and so is the reply in a cycle whose reads
/// fail.
class ScenarioServer {
  public:
    /// What happens is told to `log`, a line each. `clock` and `log` have to outlive the server. Throws
    /// ScenarioError for what a kernel device can't do, and as Image does.
    ScenarioServer(const simulator::Scenario& scenario, platform::Clock& clock, std::ostream& log);

    /// Plugs the interfaces in, in their order. Throws std::system_error.
    void PlugIn();

    /// Serves them until `stop` is readable. Throws std::system_error.
    void Run(int stop);

    /// Writes the scenario's image, if it names one. Throws ImageError.
    void SaveImage();

  private:
    struct Device {
        platform::HidIdentity identity;
        std::optional<simulator::Transmitter> transmitter;  ///< none behind a foreign interface
        std::optional<UhidDevice> kernel;                   ///< none while it is unplugged
        std::uint64_t cycle = 0;
        std::uint64_t reports = 0;  ///< written in this cycle
        std::deque<simulator::Payload> replies;
    };

    void PlugIn(Device& device);
    void Unplug(std::uint64_t cycle);
    void PlugInAgain();
    void Wait(int stop);
    void Serve(Device& device);
    void HandleEvents(Device& device);
    void Handle(Device& device, const DeviceEvent& event);
    void HandleOpen(Device& device);
    void HandleReport(Device& device, const DeviceEvent& event);
    void LetReportPass();

    platform::Clock& clock_;
    std::ostream& log_;
    platform::Clock::Duration perReport_;
    simulator::FaultList faults_;
    std::optional<simulator::Remote> remote_;
    std::optional<simulator::Image> image_;
    std::deque<Device> devices_;
    std::uint64_t cycle_ = 0;
    std::optional<platform::Clock::Duration> backAt_;
};

}  // namespace vento::uhid
