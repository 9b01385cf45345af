#include "protocol/program_remote.h"

#include <algorithm>
#include <string>

#include "protocol/code_lists.h"
#include "protocol/code_transfer.h"
#include "protocol/wait_for_remote.h"

namespace vento {
namespace {

constexpr std::uint8_t kFirstBuildWithListB = 3;
constexpr std::uint8_t kAnnounceSection = 8;     // added to a section's mask before it is written
constexpr std::uint8_t kCloseProgramming = 128;  // added to the masks of the sections that were written
constexpr std::size_t kWordsOfMemory = 65536;

// Both alternatives of the programme, decoded before the remote is known.
struct DecodedLists {
    std::array<CodeSet, 2> sets;
    std::array<SequenceResult, 2> results;
};

DecodedLists DecodeBoth(const Programme& programme) {
    DecodedLists lists;
    lists.results[0] = DecodeCodeLists(programme.LabelRecords, lists.sets[0], programme.ListARecords, 'A');
    lists.results[1] = DecodeCodeLists(programme.LabelRecords, lists.sets[1], programme.ListBRecords, 'B');
    return lists;
}

SequenceResult CheckRoom(std::array<ColumnOutcome, kColumns>& columns) {
    for (std::size_t c = 0; c < kColumns; ++c) {
        const ColumnOutcome& column = columns[c];
        if (!column.selected || !column.offset) continue;
        if (*column.offset + column.bytes > kWordsOfMemory) {
            return {ResultCode::unusableData,
                    Fill({"La memoria del telecomando non basta per i {1} valori della colonna {0}.",
                          "The remote's memory has no room for the {1} bytes of column {0}."},
                         {kSections[c].name, std::to_string(column.bytes)})};
        }
    }
    return {};
}

// Announces one section, writes it and has it verified. The result of a section whose transfer fails is that
// of the announcement, which stops nothing by itself.
SequenceResult WriteSection(const OperationContext& context, Link& link, std::size_t section,
                            std::span<const std::uint8_t> bytes, ProgrammingOutcome& outcome) {
    ColumnOutcome& column = outcome.columns[section];
    context.progressBar.SetVisible(true);
    context.yield();
    outcome.writing = true;
    SequenceResult announced =
        WriteSectionFlags(link, static_cast<std::uint8_t>(kSections[section].SectionMask + kAnnounceSection));
    const Transfer transfer = TransferCodeList(context, link, *column.offset, bytes);
    NoteOverwritten(outcome.columns, section, transfer.wordsSent);
    if (transfer.result.Failed()) {
        column.problem = transfer.result.diagnostic;
        return announced;
    }
    column.written = true;
    SequenceResult verified = VerifyCodeList(
        link, *column.offset, static_cast<std::uint16_t>(bytes.size() - 1), transfer.checkByte);
    column.verified = !verified.Failed();
    column.problem = verified.diagnostic;
    if (verified.Failed())
        verified.diagnostic = Fill({"{0}: {1}", "{0}: {1}"}, {kSections[section].name, verified.diagnostic});
    return verified;
}

// Activates the first section. If that fails the remote may just have been moved: it is waited for once more.
SequenceResult Activate(const OperationContext& context, Link& link) {
    if (!ActivateFirstSection(link).Failed()) return {};
    if (SequenceResult wait = WaitForRemote(context, link); wait.Failed()) return wait;
    if (SequenceResult activated = ActivateFirstSection(link); activated.Failed()) return activated;
    return ReleaseRemote(link);
}

// The section loop and what closes it.
SequenceResult WriteSections(const OperationContext& context, Link& link, const CodeSet& codeSet,
                             ProgrammingOutcome& outcome) {
    std::uint8_t writtenMask = 0;
    SequenceResult status;
    for (std::size_t i = 0; i < kSections.size(); ++i) {
        const ColumnOutcome& column = outcome.columns[i];
        if (!column.selected || !column.offset) continue;
        status = WriteSection(context, link, i, *codeSet[i], outcome);
        if (column.verified) writtenMask = static_cast<std::uint8_t>(writtenMask + kSections[i].SectionMask);
        if (column.written && status.Failed()) break;
    }
    if (status.Failed()) return status;
    outcome.closed =
        !WriteSectionFlags(link, static_cast<std::uint8_t>(writtenMask + kCloseProgramming)).Failed();
    return Activate(context, link);
}

// Enters what is known of the columns before anything is written.
void DescribeColumns(const Programme& programme, const CodeSet& codeSet, const SectionOffsets& offsets,
                     std::array<ColumnOutcome, kColumns>& columns) {
    for (std::size_t c = 0; c < kColumns; ++c) {
        columns[c].bytes = codeSet[c] ? codeSet[c]->size() : 0;
        if (c < offsets.count) {
            columns[c].offset = offsets.words[c];
        } else if (programme.LabelRecords[c].Present) {
            columns[c].problem = Fill({"questo telecomando ha {0} sezioni, nessuna per {1}.",
                                       "this remote has {0} sections, and none for {1}."},
                                      {std::to_string(offsets.count), kSections[c].name});
        }
    }
}

}  // namespace

std::optional<std::size_t> ProgrammingOutcome::ColumnInWork() const {
    if (!writing) return std::nullopt;
    const auto* const found = std::ranges::find_if(columns, [](const ColumnOutcome& column) {
        return column.selected && column.offset && !column.verified && column.problem.Empty();
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

SequenceResult ProgramRemote(const OperationContext& context, Link& link, const Programme& programme,
                             ProgrammingOutcome& outcome) {
    for (std::size_t c = 0; c < kColumns; ++c)
        outcome.columns[c].selected = programme.LabelRecords[c].Present;
    const DecodedLists lists = DecodeBoth(programme);
    for (const SequenceResult& result : lists.results) {
        if (result.code == ResultCode::unusableData) return result;
    }
    if (SequenceResult wait = WaitForRemote(context, link); wait.Failed()) return wait;
    context.progressBar.SetValue(0);
    context.progressBar.SetMinimum(0);

    RemoteVersion version;
    if (SequenceResult read = ReadRemoteVersion(link, version); read.Failed()) return read;
    const std::size_t setIndex = version.VersionBuild < kFirstBuildWithListB ? 0 : 1;
    outcome.version = version;
    outcome.list = setIndex == 0 ? 'A' : 'B';
    const CodeSet& codeSet = lists.sets[setIndex];
    if (lists.results[setIndex].Failed()) return lists.results[setIndex];

    std::int16_t total = 0;
    if (SequenceResult counted = CountCodeBytes(codeSet, programme.LabelRecords, total); counted.Failed()) {
        return counted;
    }
    if (total < 1) {
        return {ResultCode::sectionTableFailed,
                Phrase{"Non ci sono valori da trasmettere.", "There are no code bytes to send."}};
    }
    context.progressBar.SetMaximum(total);

    SectionOffsets offsets;
    if (SequenceResult read = ReadSectionOffsets(link, offsets); read.Failed()) return read;
    DescribeColumns(programme, codeSet, offsets, outcome.columns);
    if (SequenceResult room = CheckRoom(outcome.columns); room.Failed()) return room;
    return WriteSections(context, link, codeSet, outcome);
}

}  // namespace vento
