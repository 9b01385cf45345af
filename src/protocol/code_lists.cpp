#include "protocol/code_lists.h"

#include <algorithm>
#include <limits>

#include "programme/fields.h"
#include "protocol/commands.h"
#include "text/encoding.h"

namespace vento {
namespace {

constexpr std::uint16_t kMaximumByte = 255;

}  // namespace

ParsedCodeList ParseCodeList(std::string_view text) {
    ParsedCodeList list;
    list.bytes.reserve(1 + static_cast<std::size_t>(std::ranges::count(text, ',')));
    for (;;) {
        const auto end = text.find(',');
        const std::string_view piece = text.substr(0, end);
        const auto value = ParseDecimal(piece, kMaximumByte);
        if (!value) {
            list.bad = BadPiece{list.bytes.size() + 1, std::string(piece)};
            return list;
        }
        list.bytes.push_back(static_cast<std::uint8_t>(*value));
        if (end == std::string_view::npos) return list;
        text.remove_prefix(end + 1);
    }
}

Sentence DescribeBadPiece(const BadPiece& bad, std::string_view column, char listName) {
    return Fill(
        {"Lista {0} della colonna {1}, valore {2}: \"{3}\" non è un numero da 0 a 255. Correggere il file e "
         "riaprirlo.",
         "List {0} of column {1}, value {2}: \"{3}\" is not a number from 0 to 255. Correct the file and "
         "open it again."},
        {std::string(1, listName), column, std::to_string(bad.place), Shorten(bad.text, kQuotedCharacters)});
}

SequenceResult DecodeCodeLists(const ProgrammeRecords& labelRecords, CodeSet& codeSet,
                               const ProgrammeRecords& listRecords, char listName) {
    codeSet = {};
    SequenceResult result{
        ResultCode::nothingSelected,
        Fill({"Nessuna colonna con un'etichetta ha una lista {0}, che questo telecomando richiede.",
              "No column with a label has a list {0}, which this remote takes."},
             {std::string(1, listName)})};
    for (std::size_t c = 0; c < kColumns; ++c) {
        if (!labelRecords[c].Present || !listRecords[c].Present) continue;
        ParsedCodeList list = ParseCodeList(listRecords[c].Text);
        if (list.bad) {
            return {ResultCode::unusableData, DescribeBadPiece(*list.bad, kSections[c].name, listName)};
        }
        codeSet[c] = std::move(list.bytes);
        result = {};
    }
    return result;
}

SequenceResult CountCodeBytes(const CodeSet& codeSet, const ProgrammeRecords& labelRecords,
                              std::int16_t& total) {
    constexpr std::size_t kMaximumTotal = std::numeric_limits<std::int16_t>::max();
    std::size_t sum = 0;
    for (std::size_t c = 0; c < kColumns; ++c) {
        if (!labelRecords[c].Present) continue;
        if (!codeSet[c]) {
            return {
                ResultCode::unusableData,
                Fill(
                    {"La colonna {0} ha un'etichetta ma nessuna lista per questo telecomando, mentre altre "
                     "l'hanno. Completare il file e riaprirlo.",
                     "Column {0} has a label but no list for this remote, and others have. Complete the file "
                     "and open it again."},
                    {kSections[c].name})};
        }
        sum += codeSet[c]->size();
    }
    if (sum > kMaximumTotal) {
        return {ResultCode::unusableData,
                Fill({"Le liste hanno in tutto {0} valori; se ne possono trasmettere al massimo {1}.",
                      "The selected lists together have {0} bytes; {1} is the most that can be sent."},
                     {std::to_string(sum), std::to_string(kMaximumTotal)})};
    }
    total = static_cast<std::int16_t>(sum);
    return {};
}

}  // namespace vento
