#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "text/language.h"
#include "trace/trace.h"

namespace vento::console {

/// A file that a trace is written to, each line at once, so that it is whole up to the moment of whatever
/// goes wrong. A trace that can't be written any more does not disturb the run: it ends there, and says so in
/// `Problem`.
class TraceFile {
  public:
    /// Begins the file with this UTF-8 path anew; `clock` outlives this. Throws Failure.
    TraceFile(const std::string& path, platform::Clock& clock);
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;
    TraceFile(TraceFile&&) = delete;
    TraceFile& operator=(TraceFile&&) = delete;
    ~TraceFile() = default;

    [[nodiscard]] Trace& Lines() { return trace_; }

    /// Why the trace is not whole; nothing if it is.
    [[nodiscard]] const std::optional<Sentence>& Problem() const { return problem_; }

  private:
    void Write(std::string_view line);

    std::string path_;
    std::ofstream stream_;
    std::optional<Sentence> problem_;
    Trace trace_;
};

}  // namespace vento::console
