#pragma once

#include "console/failure.h"
#include "platform/terminal.h"

namespace vento::console {

/// Throws EndedAtOnce if the operator or the system wants the program gone.
inline void EndIfDemanded(const platform::Terminal& terminal) {
    if (const auto status = terminal.EndDemanded()) throw EndedAtOnce{*status};
}

}  // namespace vento::console
