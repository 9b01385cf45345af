#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "programme/programme_record.h"
#include "protocol/code_lists.h"
#include "protocol/commands.h"
#include "protocol/sequence.h"

namespace vento {

/// What becomes of one column of a programme.
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

    /// A run would write it, and a verification looks at it.
    [[nodiscard]] bool HasPlace() const { return selected && offset.has_value(); }

    /// Something that the operator has to know: the remote does not hold what the programme has, or not what
    /// it had before.
    [[nodiscard]] bool Lost() const { return (selected && !verified) || overwrittenBy.has_value(); }
};

/// How far an operation with a programme came, and what the remote holds of the programme now.
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

/// Notes in `columns` which sections the words of section `writer`, `count` from its offset on, have gone
/// over.
void NoteOverwritten(std::array<ColumnOutcome, kColumns>& columns, std::size_t writer, std::size_t count);

/// Which list of a programme goes where in a remote. Nothing here asks a remote; its steps are in the order
/// in which a run learns what they need.
class ProgrammePlan {
  public:
    /// Decodes both alternatives of the programme. `outcome`, new when it is handed over and outliving this,
    /// is filled by each step.
    ProgrammePlan(const Programme& programme, ProgrammingOutcome& outcome);

    /// `unusableData` if a list has a bad piece, even if it is none for the remote at hand.
    [[nodiscard]] SequenceResult CheckLists() const;

    /// Takes lists A or B by the version; fails where there is nothing to send, or too much.
    SequenceResult ChooseLists(const RemoteVersion& version);

    /// Gives each column its section; `unusableData` if a list would reach beyond the memory.
    SequenceResult PlaceColumns(const SectionOffsets& offsets);

    /// Of the alternative that was chosen.
    [[nodiscard]] const CodeSet& Codes() const { return sets_.at(chosen_); }
    /// Bytes of all selected columns in it.
    [[nodiscard]] std::int16_t Total() const { return total_; }

  private:
    const Programme& programme_;
    ProgrammingOutcome& outcome_;
    std::array<CodeSet, 2> sets_;
    std::array<SequenceResult, 2> results_;
    std::size_t chosen_ = 0;
    std::int16_t total_ = 0;
};

}  // namespace vento
