#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "platform/clock.h"
#include "platform/hid_host.h"

namespace vento {

/// A line of JSON for each step on the link, with the time at which the step was over. Allocates nothing.
class Trace {
  public:
    /// `write` gets each line, its end included, at once. `clock` outlives this.
    Trace(std::function<void(std::string_view line)> write, platform::Clock& clock);

    /// The end of a search for a transmitter; `found` is its identity.
    void Search(std::uint64_t cycle, const std::optional<platform::HidIdentity>& found);
    /// A report that was to go out.
    void Write(std::uint64_t cycle, const platform::ReportTransfer& transfer, const platform::Report& report);
    /// A report that was to come in; looked at only if it is whole.
    void Read(std::uint64_t cycle, const platform::ReportTransfer& transfer, const platform::Report& report);
    void Close(std::uint64_t cycle);

  private:
    /// `addRest` adds to the text of the line, behind its time.
    template <typename AddRest>
    void Line(std::uint64_t cycle, const AddRest& addRest);

    [[nodiscard]] std::chrono::microseconds SinceFirst();

    std::function<void(std::string_view line)> write_;
    platform::Clock& clock_;
    std::optional<platform::Clock::Duration> first_;  ///< when the first step was over
};

}  // namespace vento
