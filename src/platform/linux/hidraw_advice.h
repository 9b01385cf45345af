#pragma once

#include <string>

#include "platform/hid_host.h"

namespace vento::platform {

/// What a person can do about a transmitter that is there but could not be opened; empty for an outcome that
/// wants no doing.
[[nodiscard]] std::string HidrawAdvice(OpenOutcome outcome, Language language);

}  // namespace vento::platform
