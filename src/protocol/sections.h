#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "programme/programme_record.h"

namespace vento {

/// A section of the remote's memory holds the programme of the column of the same index.
struct Section {
    std::string_view SectionLabel;  ///< before the section's name in a read-back
    std::uint8_t SectionMask;       ///< its bit in the remote's flag bytes
};

inline constexpr std::array<Section, kColumns> kSections{{{"TV ", 16}, {"DTT ", 32}, {"SAT ", 64}}};

}  // namespace vento
