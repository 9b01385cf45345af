#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "controls/controls.h"
#include "platform/files.h"
#include "programme/programme_record.h"
#include "text/language.h"

namespace vento {

/// The controls that a load fills: the nine views, a row of three for each use, the path and the program
/// button.
struct ProgrammeControls {
    std::array<ListView, kColumns>& labels;  ///< `ListView1`
    std::array<ListView, kColumns>& listsA;  ///< `ListView2`
    std::array<ListView, kColumns>& listsB;  ///< `ListView3`
    Label& path;                             ///< `Label2`
    Button& programButton;                   ///< `Command6(0)`
};

/// The largest file that is read, some forty times what six lists of the longest section take.
inline constexpr std::size_t kLargestProgramme = 64UL << 20;

/// Why a load did not end.
struct LoadProblem {
    enum class Reason : std::uint8_t {
        cannotOpen,    ///< `systemReason` says why
        tooLarge,      ///< more than `kLargestProgramme` bytes
        empty,         ///< there is no character in the file
        tooManyLines,  ///< more than 32767 line feeds
        missingField,  ///< line `line` has no field `field`
        badColumn,     ///< field 0 of line `line` is not 1, 2 or 3
    };
    Reason reason = Reason::empty;
    std::size_t line = 0;   ///< counted from 1; with `missingField` and `badColumn` only
    std::size_t field = 0;  ///< counted from 0; with the same two
    Sentence systemReason;
};

/// Why a programme file did not load, in a sentence or two, behind the line and the field, counted from 1.
[[nodiscard]] Sentence DescribeLoadProblem(const LoadProblem& problem);

/// The same without the line and the field.
[[nodiscard]] Sentence DescribeLoadReason(const LoadProblem& problem);

/// The lines, counted from 1, that a column's lists were taken from; 0 for none.
struct ColumnLines {
    std::size_t listA = 0;
    std::size_t listB = 0;
};

struct LoadResult {
    std::optional<LoadProblem> problem;  ///< nothing if the load ran to its end
    std::array<ColumnLines, kColumns> lines;
};

/// Loads the programme file at the path `nnfilevento` into the controls.
///
/// The path is on record in `controls.path` before the file is opened. A file that can't be opened, or is too
/// large to be read, changes nothing else. Any other load begins with cleared views and stops where it meets
/// a fault, with what it has filled by then left in the views; only one that runs to its end makes the
/// program button visible. Throws nothing of its own.
LoadResult Aprifilevento(const std::string& nnfilevento, platform::Files& files,
                         const ProgrammeControls& controls);

}  // namespace vento
