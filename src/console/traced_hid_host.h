#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "console/trace.h"
#include "platform/hid_host.h"
#include "platform/terminal.h"

namespace vento::console {

/// Counts the cycles of another HID host and traces its steps. If termination was requested, a search or a
/// report throws EndedAtOnce before it begins.
///
/// A cycle is a search and what is done with the device that it opened. Of a search that opens several
/// devices one after the other the first is traced: it is the one that an operation would take.
class TracedHidHost final : public platform::ForwardingHidHost {
  public:
    /// `trace` may be null; all three outlive this.
    TracedHidHost(platform::HidHost& host, const platform::Terminal& terminal, Trace* trace)
        : ForwardingHidHost(host), terminal_(terminal), trace_(trace) {}

    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override;
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override;
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override;
    void Close(platform::HidHandle device) override;

    /// Searches so far.
    [[nodiscard]] std::uint64_t Cycles() const { return cycle_; }

  private:
    const platform::Terminal& terminal_;
    Trace* trace_;
    std::uint64_t cycle_ = 0;
    bool found_ = false;  ///< in this cycle
    std::optional<platform::HidHandle> traced_;
};

}  // namespace vento::console
