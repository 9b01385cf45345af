#include "protocol/verify_remote.h"

#include <algorithm>
#include <array>
#include <span>

#include "protocol/code_transfer.h"
#include "protocol/read_back.h"
#include "protocol/wait_for_remote.h"

namespace vento {
namespace {

// The checksum is a sum of 8 bits: of two programmes one in 256 passes for the other. So the head of the
// section, with its name, is compared as well, of a remote that can be read back. What is wrong with it;
// empty if nothing.
Sentence CompareHead(Link& link, std::uint16_t offset, std::span<const std::uint8_t> bytes,
                     bool canBeReadBack) {
    if (!canBeReadBack) return {};
    std::array<std::uint8_t, kNameLength> memory{};
    const auto head = bytes.first(std::min(bytes.size(), kNameLength));
    if (const SequenceResult read = ReadRemoteBlock(link, offset, std::span(memory).first(head.size()));
        read.Failed()) {
        return read.diagnostic;
    }
    if (std::ranges::equal(head, std::span(memory).first(head.size()))) return {};
    return Fill({"la sezione comincia con \"{0}\" invece che con \"{1}\".",
                 "the section begins with \"{0}\" and not with \"{1}\"."},
                {DecodeName(std::span(memory).first(head.size())), DecodeName(head)});
}

void VerifyColumn(Link& link, std::size_t column, const CodeSet& codes, std::uint8_t flags,
                  bool canBeReadBack, ColumnOutcome& outcome) {
    if (!outcome.HasPlace()) return;
    if ((flags & kSections.at(column).SectionMask) != 0) {
        outcome.problem = Phrase{"il telecomando segna questa sezione come libera.",
                                 "the remote marks this section as free."};
        return;
    }
    const auto& bytes = *codes.at(column);
    const SequenceResult result = VerifyCodeList(
        link, *outcome.offset, static_cast<std::uint16_t>(bytes.size() - 1), CheckByteOf(bytes));
    outcome.problem =
        result.Failed() ? result.diagnostic : CompareHead(link, *outcome.offset, bytes, canBeReadBack);
    outcome.verified = outcome.problem.Empty();
    if (outcome.verified) return;
    // A remote that took a command whose reply was lost waits for the frame behind it; a poll puts it back.
    Reply reply{};
    SendCommand(link, reply, command::kPresence, 1);
}

// What is not proved, a line for each column; success if all is.
SequenceResult Conclude(const ProgrammingOutcome& outcome) {
    SequenceResult result;
    for (std::size_t c = 0; c < kColumns; ++c) {
        const ColumnOutcome& column = outcome.columns.at(c);
        if (!column.Lost()) continue;
        if (result.Failed()) result.diagnostic += "\n";
        result.code = ResultCode::verificationFailed;
        result.diagnostic += Labelled(kSections.at(c).name, column.problem);
    }
    return result;
}

}  // namespace

SequenceResult VerifyRemote(const OperationContext& context, Link& link, const Programme& programme,
                            ProgrammingOutcome& outcome) {
    ProgrammePlan plan(programme, outcome);
    if (SequenceResult lists = plan.CheckLists(); lists.Failed()) return lists;
    if (SequenceResult wait = WaitForRemote(context, link); wait.Failed()) return wait;
    RemoteVersion version;
    if (SequenceResult read = ReadRemoteVersion(link, version); read.Failed()) return read;
    if (SequenceResult chosen = plan.ChooseLists(version); chosen.Failed()) return chosen;
    SectionOffsets offsets;
    if (SequenceResult read = ReadSectionOffsets(link, offsets); read.Failed()) return read;
    if (SequenceResult placed = plan.PlaceColumns(offsets); placed.Failed()) return placed;
    std::uint8_t flags = 0;
    if (SequenceResult read = ReadSectionFlags(link, flags); read.Failed()) return read;
    for (std::size_t c = 0; c < kColumns; ++c)
        VerifyColumn(link, c, plan.Codes(), flags, version.CanBeReadBack(), outcome.columns.at(c));
    SequenceResult released = ReleaseRemote(link);
    SequenceResult result = Conclude(outcome);
    return result.Failed() ? result : released;
}

}  // namespace vento
