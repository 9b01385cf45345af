#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace vento {

/// Columns of a programme, and sections of a remote's memory: 0 TV, 1 DTT, 2 SAT.
inline constexpr std::size_t kColumns = 3;

/// One text of a programme on its way from the panel to the remote.
struct ProgrammeRecord {
    std::string Text;      ///< without blanks around it; empty when not present
    bool Present = false;  ///< whether there is any text
};

/// One record a column.
using ProgrammeRecords = std::array<ProgrammeRecord, kColumns>;

/// What the panel's views hold when a click gathers them.
struct Programme {
    ProgrammeRecords LabelRecords;  ///< `Present` marks the columns that are selected
    ProgrammeRecords ListARecords;  ///< code lists for remotes with a `VersionBuild` below 3
    ProgrammeRecords ListBRecords;  ///< code lists for all others
};

}  // namespace vento
