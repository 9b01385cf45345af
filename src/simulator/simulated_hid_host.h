#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/hid_host.h"
#include "simulator/faults.h"
#include "simulator/image.h"
#include "simulator/remote.h"
#include "simulator/scenario.h"
#include "simulator/transmitter.h"

namespace vento::simulator {

/// A machine whose HID interfaces, transmitter and remote are those of a scenario.
///
/// A cycle, in which the scenario's faults apply, is a search. A device stays in the cycle of the search that
/// opened it. There is one remote, which lies in front of whichever transmitter is used. A read for which
/// nothing is queued fails at once: nothing could come in the meantime.
class SimulatedHidHost final : public platform::HidHost {
  public:
    /// Takes the contents of the remote from the scenario's image, if it names one. `clock` has to outlive
    /// the host. Throws as Image does.
    SimulatedHidHost(const Scenario& scenario, platform::Clock& clock);

    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override;
    /// By the faults of the next search.
    [[nodiscard]] platform::Presence Detect(platform::Wanted wanted) override;
    platform::ReportTransfer Write(platform::HidHandle handle, const platform::Report& report) override;
    platform::ReportTransfer Read(platform::HidHandle handle, platform::Report& report) override;
    void Cancel(platform::HidHandle) override {}
    void Close(platform::HidHandle handle) override;

    /// Writes the scenario's image, if it names one; the destructor does so too, but can't tell of a failure.
    /// Throws ImageError.
    void SaveImage();

    /// The remote; null if the scenario has none.
    [[nodiscard]] const Remote* TheRemote() const { return remote_ ? &*remote_ : nullptr; }
    /// The transmitter behind the scenario's interface of this index; null behind a foreign one.
    [[nodiscard]] const Transmitter* TransmitterAt(std::size_t index) const;

  private:
    struct Device {
        platform::HidIdentity identity;
        bool opens = true;
        std::optional<Transmitter> transmitter;
        bool isOpen = false;
        std::uint64_t cycle = 0;
        std::uint64_t writes = 0;  ///< attempted in this cycle
    };

    [[nodiscard]] Device* OpenDevice(platform::HidHandle handle);
    [[nodiscard]] bool IsListed(const Device& device) const;
    void GoAway(std::uint64_t cycle);
    void LetReportPass();

    platform::Clock& clock_;
    platform::Clock::Duration perReport_;
    FaultList faults_;
    std::optional<Remote> remote_;
    std::optional<Image> image_;
    std::vector<Device> devices_;
    std::uint64_t cycle_ = 0;
    bool plugged_ = true;  ///< in this search
    std::optional<platform::Clock::Duration> awayUntil_;
};

}  // namespace vento::simulator
