#pragma once

#include <string>

#include "platform/tongue.h"
#include "programme/loader.h"

namespace vento {

/// Why a programme file did not load, in a sentence or two: the line and the field, or the system's reason.
[[nodiscard]] std::string DescribeLoadProblem(const LoadProblem& problem, platform::Tongue tongue);

/// The same without the line and the field.
[[nodiscard]] std::string DescribeLoadReason(const LoadProblem& problem, platform::Tongue tongue);

}  // namespace vento
