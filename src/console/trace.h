#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

#include "platform/hid_host.h"
#include "text/language.h"

namespace vento::console {

/// A file with a line of JSON for each step on the link, written out at once, so that it is whole up to the
/// moment of whatever goes wrong. A trace that can't be written any more does not disturb the run: it ends
/// there, and says so in `Problem`.
class Trace {
  public:
    /// Begins the file with this UTF-8 path anew. Throws Failure.
    explicit Trace(const std::string& path);

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

    std::string path_;
    std::ofstream stream_;
    std::optional<Sentence> problem_;
};

}  // namespace vento::console
