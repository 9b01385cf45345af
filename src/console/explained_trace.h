#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "console/recorded_exchange.h"
#include "console/recorded_trace.h"
#include "text/language.h"

namespace vento::console {

/// A frame of a trace and what came back, or a run of polls, in words.
struct ExplainedStep {
    RecordedExchange exchange;  ///< of polls the latest
    std::uint64_t firstCycle = 0;
    std::size_t count = 1;  ///< polls
    std::size_t good = 0;   ///< of them
    Sentence arguments;     ///< what the frame carries
    Sentence answer;        ///< what came back, or what went wrong
    bool failed = false;    ///< it did not cross, or was not answered as it should have been
    Sentence deviation;     ///< why it is not what the protocol expects; empty if it is
};

struct ExplainedTrace {
    std::vector<ExplainedStep> steps;
    std::optional<std::size_t> firstDeviation;  ///< index of the step
    Sentence ending;                            ///< where the trace stops
};

/// Follows a trace through the protocol. One that begins in the middle of a conversation is followed from its
/// first frame that can begin a sequence.
[[nodiscard]] ExplainedTrace ExplainTrace(const RecordedTrace& trace);

}  // namespace vento::console
