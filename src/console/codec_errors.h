#pragma once

#include <exception>

#include "text/language.h"

namespace vento::console {

/// What the codec says of an error, in every language: the library itself says it in English alone.
[[nodiscard]] Sentence DescribeCodecError(const std::exception& error);

}  // namespace vento::console
