#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "programme/programme_record.h"
#include "protocol/commands.h"
#include "protocol/sequence.h"
#include "usb/gestione_hid.h"

namespace vento {

/// What became of one column of a programme.
struct ColumnOutcome {
    bool selected = false;
    std::size_t bytes = 0;  ///< in the list that was chosen for the remote
    std::optional<std::uint16_t>
        offset;             ///< of its section, in words; nothing where the remote has none for it
    bool written = false;   ///< the remote acknowledged every block
    bool verified = false;  ///< and the checksum of the whole
    /// The column whose list was written over this one's section: later, or without this one being written.
    std::optional<std::size_t> overwrittenBy;
    Sentence problem;  ///< why it is not verified; empty if it is, and where it was not selected

    /// Something that the operator has to know: the remote does not hold what the programme has, or not what
    /// it had before.
    [[nodiscard]] bool Lost() const { return (selected && !verified) || overwrittenBy.has_value(); }
};

/// How far a programming run came, and what the remote holds of the programme now.
struct ProgrammingOutcome {
    std::optional<RemoteVersion> version;
    std::optional<char> list;  ///< 'A' or 'B', by the version
    std::array<ColumnOutcome, kColumns> columns;
    bool closed = false;   ///< the remote acknowledged the flags that close the run
    bool writing = false;  ///< a section has been announced, so that the remote is not what it was

    /// The column whose section is being written or verified now; nothing before the first and after the
    /// last.
    [[nodiscard]] std::optional<std::size_t> ColumnInWork() const;

    /// Something of the programme did not arrive, whatever the result code.
    [[nodiscard]] bool Incomplete() const;
};

/// One whole programming run: decodes the code lists, waits for the remote, chooses list A or B by its
/// version, writes each selected column into its section, has each section verified, and activates the first
/// section.
///
/// The result tells which step failed. A section whose transfer fails is left out and the run goes on; a
/// section whose verification fails ends the run. What was written stays written. `outcome`, new when it is
/// handed over, is filled as the run goes. The bar runs from 0 to the number of bytes.
SequenceResult ProgramRemote(const OperationContext& context, Link& link, const Programme& programme,
                             ProgrammingOutcome& outcome);

/// Notes in `columns` which sections the words of section `writer`, `count` from its offset on, have gone
/// over.
void NoteOverwritten(std::array<ColumnOutcome, kColumns>& columns, std::size_t writer, std::size_t count);

}  // namespace vento
