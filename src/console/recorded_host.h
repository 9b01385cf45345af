#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "console/recorded_trace.h"
#include "platform/hid_host.h"

namespace vento::console {

/// A transmitter and a remote that answer as those of a trace did, cycle for cycle, as long as they are asked
/// the same. Where the conversation differs from the recorded one, and where that ends, the operation throws
/// Failure.
class RecordedHidHost final : public platform::HidHost {
  public:
    /// `name` is what the trace is called in what it says.
    RecordedHidHost(RecordedTrace trace, std::string name)
        : trace_(std::move(trace)), name_(std::move(name)) {}

    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override;
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override;
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override;
    void Cancel(platform::HidHandle) override {}
    void Close(platform::HidHandle) override {}

  private:
    [[nodiscard]] const RecordedCycle& Cycle() const { return trace_.cycles.at(searches_ - 1); }
    const RecordedReport& Next(bool outgoing);
    [[noreturn]] void Differ(const Sentence& difference) const;
    [[noreturn]] void End() const;

    RecordedTrace trace_;
    std::string name_;
    std::size_t searches_ = 0;  ///< so far
    std::size_t reports_ = 0;   ///< of this cycle, so far
};

}  // namespace vento::console
