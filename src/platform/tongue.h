#pragma once

#include <cstdint>

namespace vento::platform {

/// The two languages that the system speaks.
enum class Tongue : std::uint8_t { italian, english };

}  // namespace vento::platform
