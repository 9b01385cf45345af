#include "protocol/code_lists.h"

#include <algorithm>
#include <limits>

#include "programme/decimal.h"

namespace vento {
namespace {

constexpr std::array<std::string_view, kColumns> kColumnNames{"TV", "DTT", "SAT"};
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

SequenceResult DecodeCodeLists(const ProgrammeRecords& labelRecords, CodeSet& codeSet,
                               const ProgrammeRecords& listRecords, std::string_view listName) {
    codeSet = {};
    SequenceResult result{ResultCode::nothingSelected,
                          "No selected column has a list " + std::string(listName) + "."};
    for (std::size_t c = 0; c < kColumns; ++c) {
        if (!labelRecords[c].Present || !listRecords[c].Present) continue;
        ParsedCodeList list = ParseCodeList(listRecords[c].Text);
        if (list.bad) {
            return {ResultCode::unusableData, "List " + std::string(listName) + " of column " +
                                                  std::string(kColumnNames[c]) + ", piece " +
                                                  std::to_string(list.bad->place) + ": \"" + list.bad->text +
                                                  "\" is not a number from 0 to 255."};
        }
        codeSet[c] = std::move(list.bytes);
        result = {};
    }
    return result;
}

SequenceResult CountCodeBytes(const CodeSet& codeSet, const ProgrammeRecords& labelRecords,
                              std::int16_t& total) {
    std::size_t sum = 0;
    for (std::size_t c = 0; c < kColumns; ++c) {
        if (!labelRecords[c].Present) continue;
        if (!codeSet[c]) {
            return {ResultCode::unusableData,
                    "Column " + std::string(kColumnNames[c]) +
                        " has a label but no list for this remote, and others have."};
        }
        sum += codeSet[c]->size();
    }
    if (sum > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
        return {ResultCode::unusableData, "The selected lists together have " + std::to_string(sum) +
                                              " bytes; 32767 is the most that can be sent."};
    }
    total = static_cast<std::int16_t>(sum);
    return {};
}

}  // namespace vento
