#pragma once

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <memory>
#include <optional>
#include <vector>

#include "device/kernel_device.h"
#include "platform/clock.h"
#include "simulator/faults.h"
#include "simulator/image.h"
#include "simulator/remote.h"
#include "simulator/scenario.h"
#include "simulator/transmitter.h"

namespace vento::device {

/// Puts the HID interfaces of a scenario into the kernel and serves them.
///
/// A cycle, in which the scenario's faults apply, is a frame: a device sees neither searches nor, on USB, who
/// opens it. A fault in writing cannot reach the program that writes: the report is lost instead, and so is
/// the reply in a cycle whose reads fail.
class ScenarioServer {
  public:
    /// What happens is told to `log`, a line each. `clock` and `log` have to outlive the server. Throws
    /// storage::ContentError for what a kernel device can't do, and as Image does.
    ScenarioServer(const simulator::Scenario& scenario, Port port, platform::Clock& clock, std::ostream& log);

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
        std::unique_ptr<KernelDevice> kernel;               ///< none while it is unplugged
        std::uint64_t cycle = 0;
        std::uint64_t reports = 0;         ///< of this cycle's frame that have come
        std::size_t reportsToCome = 0;     ///< until the frame is whole
        platform::Clock::Duration last{};  ///< when the last one came
        std::deque<simulator::Payload> replies;
    };

    void PlugIn(Device& device);
    void Unplug(std::uint64_t cycle);
    void PlugInAgain();
    void Wait(int stop);
    void Serve(Device& device);
    void HandleEvents(Device& device);
    void Handle(Device& device, const DeviceEvent& event);
    void HandleReport(Device& device, const DeviceEvent& event);
    void BeginFrame(Device& device, std::uint8_t lengthByte);
    static void Forget(Device& device);
    void LetReportPass();

    Port port_;
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

}  // namespace vento::device
