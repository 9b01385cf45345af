#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/hid_host.h"
#include "trace/trace.h"

namespace vento {

/// Counts the cycles of another HID host and traces its steps.
///
/// A cycle is a search and what is done with the device that it opened. Of a search that opens several
/// devices one after the other the first is traced: it is the one that an operation would take.
class TracedHidHost final : public platform::ForwardingHidHost {
  public:
    /// `trace` may be null. `before`, which may be empty, is called before a search and before a report, and
    /// may throw to have nothing of it begin. Host and trace outlive this.
    TracedHidHost(platform::HidHost& host, Trace* trace, std::function<void()> before)
        : ForwardingHidHost(host), trace_(trace), before_(std::move(before)) {}

    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override;
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override;
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override;
    void Close(platform::HidHandle device) override;

    /// Searches so far.
    [[nodiscard]] std::uint64_t Cycles() const { return cycle_; }

  private:
    void Before() const;

    Trace* trace_;
    std::function<void()> before_;
    std::uint64_t cycle_ = 0;
    bool found_ = false;  ///< in this cycle
    std::optional<platform::HidHandle> traced_;
};

}  // namespace vento
