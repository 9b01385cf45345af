#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/hid_host.h"
#include "text/language.h"

namespace vento::console {

/// A file with a line of JSON for each step on the link, with the time at which the step was over. It is
/// written out at once, so that it is whole up to the moment of whatever goes wrong. A trace that can't be
/// written any more does not disturb the run: it ends there, and says so in `Problem`.
class Trace {
  public:
    /// Begins the file with this UTF-8 path anew; `clock` outlives this. Throws Failure.
    Trace(const std::string& path, platform::Clock& clock);

    /// The end of a search for a transmitter; `found` is its identity.
    void Search(std::uint64_t cycle, const std::optional<platform::HidIdentity>& found);
    /// A report that was to go out.
    void Write(std::uint64_t cycle, const platform::ReportTransfer& transfer, const platform::Report& report);
    /// A report that was to come in; looked at only if it is whole.
    void Read(std::uint64_t cycle, const platform::ReportTransfer& transfer, const platform::Report& report);
    void Close(std::uint64_t cycle);

    /// Why the trace is not whole; nothing if it is.
    [[nodiscard]] const std::optional<Sentence>& Problem() const { return problem_; }

  private:
    void Line(std::uint64_t cycle, const std::string& rest);

    [[nodiscard]] std::string SecondsSinceFirst();

    std::string path_;
    std::ofstream stream_;
    platform::Clock& clock_;
    std::optional<platform::Clock::Duration> first_;  ///< when the first step was over
    std::optional<Sentence> problem_;
};

}  // namespace vento::console
