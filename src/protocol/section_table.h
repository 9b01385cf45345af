#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "protocol/link.h"
#include "protocol/sections.h"
#include "protocol/sequence_result.h"

namespace vento {

/// Where the sections of a remote's memory begin, in words of 16 bits.
struct SectionOffsets {
    std::array<std::uint16_t, kSections.size()> words{};
    std::size_t count = 0;  ///< sections that there are, 1 to 3
};

/// Asks the remote for its section count and then for their offsets. A count of 0 or above 3 is
/// `unusableData`, and the offsets are not asked for.
[[nodiscard]] SequenceResult ReadSectionOffsets(SectionOffsets& offsets, Link& link);

}  // namespace vento
