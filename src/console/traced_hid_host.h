#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "console/trace.h"
#include "platform/hid_host.h"
#include "platform/terminal.h"

namespace vento::console {

/// Another HID host, on whose way the cycles are counted, the steps are traced and a demand to end is met:
/// before each search and each report it is looked for, and EndedAtOnce thrown.
///
/// A cycle is a search and what is done with the device that it opened. Of a search that opens several
/// devices one after the other the first is traced: it is the one that an operation would take.
class TracedHidHost final : public platform::HidHost {
  public:
    /// `trace` may be null; all three outlive this.
    TracedHidHost(platform::HidHost& host, const platform::Terminal& terminal, Trace* trace)
        : host_(host), terminal_(terminal), trace_(trace) {}

    void BeginSearch() override;
    [[nodiscard]] bool NextInterface() override { return host_.NextInterface(); }
    [[nodiscard]] std::string InterfaceName() const override { return host_.InterfaceName(); }
    [[nodiscard]] platform::OpenAnswer OpenInterface(bool (*wanted)(platform::HidIdentity)) override;
    void EndSearch() override;
    [[nodiscard]] bool WriteReport(platform::HidHandle device, const platform::Report& report) override;
    [[nodiscard]] bool ReadReport(platform::HidHandle device, platform::Report& report) override;
    void Cancel(platform::HidHandle device) override { host_.Cancel(device); }
    void Close(platform::HidHandle device) override;
    [[nodiscard]] std::string Advice(platform::OpenOutcome outcome, Language language) const override {
        return host_.Advice(outcome, language);
    }

    /// Searches so far.
    [[nodiscard]] std::uint64_t Cycles() const { return cycle_; }

  private:
    platform::HidHost& host_;
    const platform::Terminal& terminal_;
    Trace* trace_;
    std::uint64_t cycle_ = 0;
    bool found_ = false;  ///< in this cycle
    std::optional<platform::HidHandle> traced_;
};

}  // namespace vento::console
