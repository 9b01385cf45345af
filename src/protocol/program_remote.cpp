#include "protocol/program_remote.h"

#include <string>

#include "protocol/code_transfer.h"
#include "protocol/wait_for_remote.h"

namespace vento {
namespace {

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
    if (verified.Failed()) verified.diagnostic = Labelled(kSections[section].name, verified.diagnostic);
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
        if (!column.HasPlace()) continue;
        status = WriteSection(context, link, i, *codeSet[i], outcome);
        if (column.verified) writtenMask = static_cast<std::uint8_t>(writtenMask + kSections[i].SectionMask);
        if (column.written && status.Failed()) break;
    }
    if (status.Failed()) return status;
    outcome.closed =
        !WriteSectionFlags(link, static_cast<std::uint8_t>(writtenMask + kCloseProgramming)).Failed();
    return Activate(context, link);
}

}  // namespace

SequenceResult ProgramRemote(const OperationContext& context, Link& link, const Programme& programme,
                             ProgrammingOutcome& outcome) {
    ProgrammePlan plan(programme, outcome);
    if (SequenceResult lists = plan.CheckLists(); lists.Failed()) return lists;
    if (SequenceResult wait = WaitForRemote(context, link); wait.Failed()) return wait;
    context.progressBar.SetValue(0);
    context.progressBar.SetMinimum(0);

    RemoteVersion version;
    if (SequenceResult read = ReadRemoteVersion(link, version); read.Failed()) return read;
    if (SequenceResult chosen = plan.ChooseLists(version); chosen.Failed()) return chosen;
    context.progressBar.SetMaximum(plan.Total());

    SectionOffsets offsets;
    if (SequenceResult read = ReadSectionOffsets(link, offsets); read.Failed()) return read;
    if (SequenceResult placed = plan.PlaceColumns(offsets); placed.Failed()) return placed;
    return WriteSections(context, link, plan.Codes(), outcome);
}

}  // namespace vento
