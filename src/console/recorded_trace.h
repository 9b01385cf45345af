#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hid_host.h"
#include "text/language.h"

namespace vento::console {

/// A report of a trace, as it crossed or failed to.
struct RecordedReport {
    bool outgoing = false;
    bool ok = false;
    platform::Report report{};  ///< zeros for what was to come in and did not
    int error = 0;              ///< with `ok` false, like `bytes`
    std::size_t bytes = 0;
};

/// A search for the transmitter and what was done with the one that was found.
struct RecordedCycle {
    std::uint64_t number = 0;
    std::optional<platform::HidIdentity> found;
    bool beginsHere = false;  ///< false if the trace begins in the middle of it
    bool closed = false;      ///< or nothing was found; false if the trace ends in the middle of it
    std::vector<RecordedReport> reports;
};

/// What `--trace` has written.
struct RecordedTrace {
    std::vector<RecordedCycle> cycles;
    std::size_t lines = 0;  ///< that were read
    bool cutOff = false;    ///< the last line breaks off
};

/// Whether `text` begins like a trace, and unlike a scenario.
[[nodiscard]] bool LooksLikeTrace(std::string_view text);

/// Reads a trace, of which anything may be missing at the beginning and at the end. Keys of a later version
/// are passed over. Throws storage::ContentError with the line that is none of a trace.
[[nodiscard]] RecordedTrace ParseTrace(std::string_view text);

/// The same of what the input of this name holds. Throws Failure.
[[nodiscard]] RecordedTrace TraceOf(std::string_view text, const std::string& name);

}  // namespace vento::console
