#pragma once

#include <cstdint>

namespace vento::bench {

/// Calls of operator new in this program so far.
[[nodiscard]] std::uint64_t Allocations();

}  // namespace vento::bench
