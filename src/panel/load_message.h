#pragma once

#include <string>

#include "programme/loader.h"
#include "text/language.h"

namespace vento {

/// Why a programme file did not load, in a sentence or two: the line and the field, or the system's reason.
[[nodiscard]] std::string DescribeLoadProblem(const LoadProblem& problem, Language language);

/// The same without the line and the field.
[[nodiscard]] std::string DescribeLoadReason(const LoadProblem& problem, Language language);

}  // namespace vento
