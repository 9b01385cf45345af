#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "programme/programme_record.h"
#include "protocol/sequence.h"

namespace vento {

/// A piece of a code list that is not a whole number from 0 to 255.
struct BadPiece {
    std::size_t place = 0;  ///< among the pieces, counted from 1
    std::string text;
};

struct ParsedCodeList {
    std::vector<std::uint8_t> bytes;  ///< up to the bad piece, if there is one
    std::optional<BadPiece> bad;
};

/// Turns comma-separated decimal bytes into bytes. Blanks around a number do no harm; an empty piece is bad,
/// and so an empty text is.
[[nodiscard]] ParsedCodeList ParseCodeList(std::string_view text);

/// The code lists of one alternative, by column; nothing where a column is not selected or has no list.
using CodeSet = std::array<std::optional<std::vector<std::uint8_t>>, kColumns>;

/// Decodes the lists of the selected columns. `nothingSelected` if no selected column has a list,
/// `unusableData` if a list has a bad piece. `listName`, 'A' or 'B', is for the diagnostic.
SequenceResult DecodeCodeLists(const ProgrammeRecords& labelRecords, CodeSet& codeSet,
                               const ProgrammeRecords& listRecords, char listName);

/// Adds up the bytes of the selected columns into `total`. `unusableData` if one of them has no list, or if
/// the sum is above 32767.
SequenceResult CountCodeBytes(const CodeSet& codeSet, const ProgrammeRecords& labelRecords,
                              std::int16_t& total);

/// What is wrong with a piece of a list, and what helps.
[[nodiscard]] Sentence DescribeBadPiece(const BadPiece& bad, std::string_view column, char listName);

}  // namespace vento
