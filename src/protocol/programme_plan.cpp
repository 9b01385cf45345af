#include "protocol/programme_plan.h"

#include <algorithm>
#include <string>

namespace vento {
std::optional<std::size_t> ProgrammingOutcome::ColumnInWork() const {
    if (!writing) return std::nullopt;
    const auto* const found = std::ranges::find_if(columns, [](const ColumnOutcome& column) {
        return column.HasPlace() && !column.verified && column.problem.Empty();
    });
    if (found == columns.end()) return std::nullopt;
    return static_cast<std::size_t>(found - columns.begin());
}

bool ProgrammingOutcome::Incomplete() const {
    const bool anySelected = std::ranges::any_of(columns, &ColumnOutcome::selected);
    return std::ranges::any_of(columns, &ColumnOutcome::Lost) || (anySelected && !closed);
}

void NoteOverwritten(std::array<ColumnOutcome, kColumns>& columns, std::size_t writer, std::size_t count) {
    if (count == 0) return;
    const std::size_t begin = *columns[writer].offset;
    const std::size_t end = begin + count;
    for (std::size_t c = 0; c < kColumns; ++c) {
        ColumnOutcome& other = columns[c];
        if (c == writer || !other.offset) continue;
        // What was written before ends where its list does; of any other section its head is what counts, and
        // one that is still to be written does not lose anything yet.
        const bool stillToCome = c > writer && other.selected;
        const std::size_t otherEnd = *other.offset + (other.selected ? other.bytes : 1);
        if (!stillToCome && begin < otherEnd && *other.offset < end) other.overwrittenBy = writer;
    }
}

ProgrammePlan::ProgrammePlan(const Programme& programme, ProgrammingOutcome& outcome)
    : programme_(programme), outcome_(outcome) {
    for (std::size_t c = 0; c < kColumns; ++c)
        outcome_.columns[c].selected = programme_.LabelRecords[c].Present;
    results_[0] = DecodeCodeLists(programme_.LabelRecords, sets_[0], programme_.ListARecords, 'A');
    results_[1] = DecodeCodeLists(programme_.LabelRecords, sets_[1], programme_.ListBRecords, 'B');
}

SequenceResult ProgrammePlan::CheckLists() const {
    for (const SequenceResult& result : results_) {
        if (result.code == ResultCode::unusableData) return result;
    }
    return {};
}

SequenceResult ProgrammePlan::ChooseLists(const RemoteVersion& version) {
    chosen_ = version.TakesListB() ? 1 : 0;
    outcome_.version = version;
    outcome_.list = chosen_ == 0 ? 'A' : 'B';
    if (results_.at(chosen_).Failed()) return results_.at(chosen_);
    if (SequenceResult counted = CountCodeBytes(Codes(), programme_.LabelRecords, total_); counted.Failed()) {
        return counted;
    }
    if (total_ < 1) {
        return {ResultCode::sectionTableFailed,
                Phrase{"Non ci sono valori da trasmettere.", "There are no code bytes to send."}};
    }
    return {};
}

SequenceResult ProgrammePlan::PlaceColumns(const SectionOffsets& offsets) {
    for (std::size_t c = 0; c < kColumns; ++c) {
        ColumnOutcome& column = outcome_.columns[c];
        column.bytes = Codes()[c] ? Codes()[c]->size() : 0;
        if (c < offsets.count) {
            column.offset = offsets.words[c];
        } else if (column.selected) {
            column.problem = Fill({"questo telecomando ha {0} {0:sezione|sezioni}, nessuna per {1}.",
                                   "this remote has {0} {0:section|sections}, and none for {1}."},
                                  {std::to_string(offsets.count), kSections[c].name});
        }
    }
    for (std::size_t c = 0; c < kColumns; ++c) {
        const ColumnOutcome& column = outcome_.columns[c];
        if (!column.HasPlace()) continue;
        if (*column.offset + column.bytes > kWordsOfMemory) {
            return {ResultCode::unusableData,
                    Fill({"La memoria del telecomando non basta per i {1} valori della colonna {0}.",
                          "The remote's memory has no room for the {1} bytes of column {0}."},
                         {kSections[c].name, std::to_string(column.bytes)})};
        }
    }
    return {};
}

}  // namespace vento
