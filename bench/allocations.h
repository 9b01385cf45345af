#pragma once

#include <cstddef>
#include <cstdint>

namespace vento::bench {

/// Calls of operator new in this program so far.
[[nodiscard]] std::uint64_t Allocations();

/// The most bytes that operator new has had out at the same time, over what was out at the last ForgetPeak().
[[nodiscard]] std::size_t PeakBytes();
void ForgetPeak();

}  // namespace vento::bench
