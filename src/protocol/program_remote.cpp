#include "protocol/program_remote.h"

#include <array>
#include <cstdint>
#include <string>

#include "protocol/code_lists.h"
#include "protocol/code_transfer.h"
#include "protocol/commands.h"
#include "protocol/read_back.h"
#include "protocol/section_table.h"
#include "protocol/wait_for_remote.h"

namespace vento {
namespace {

constexpr std::uint8_t kFirstBuildWithListB = 3;
constexpr std::uint8_t kAnnounceSection = 8;     // added to a section's mask before it is written
constexpr std::uint8_t kCloseProgramming = 128;  // added to the masks of the sections that were written
constexpr std::size_t kWordsOfMemory = 65536;

// Sections that the remote has and the programme selects.
bool IsWritten(std::size_t section, const SectionOffsets& offsets, const Programme& programme) {
    return section < offsets.count && programme.LabelRecords[section].Present;
}

SequenceResult CheckRoom(const SectionOffsets& offsets, const Programme& programme, const CodeSet& codeSet) {
    for (std::size_t i = 0; i < offsets.count; ++i) {
        if (!IsWritten(i, offsets, programme)) continue;
        if (offsets.words[i] + codeSet[i]->size() > kWordsOfMemory) {
            return {ResultCode::unusableData, "The section at word " + std::to_string(offsets.words[i]) +
                                                  " has no room for a list of " +
                                                  std::to_string(codeSet[i]->size()) + " bytes."};
        }
    }
    return {};
}

// Announces one section, writes it and has it verified. A section whose transfer fails is not `written`, and
// the result is then that of the announcement, which stops nothing by itself.
SequenceResult WriteSection(std::size_t section, std::uint16_t offset, std::span<const std::uint8_t> bytes,
                            const OperationContext& context, ProgressBar& progressBar, Link& link,
                            bool& written) {
    written = false;
    progressBar.SetVisible(true);
    context.yield();
    Reply reply{};
    SequenceResult announced;
    const auto value = static_cast<std::uint8_t>(kSections[section].SectionMask + kAnnounceSection);
    if (const auto code = WriteSectionFlags(reply, value, link); code != ResultCode::success) {
        announced = Failure(code, "The section could not be announced", link, reply);
    }
    const Transfer transfer = TransferCodeList(progressBar, offset, context, link, bytes);
    if (transfer.result.code != ResultCode::success) {
        announced.diagnostic += (announced.diagnostic.empty() ? "" : " ") + transfer.result.diagnostic;
        return announced;
    }
    SequenceResult verified = VerifyCodeList(offset, static_cast<std::uint16_t>(bytes.size() - 1), link,
                                             ResultCode::verificationFailed, transfer.checkByte);
    written = verified.code == ResultCode::success;
    return verified;
}

// Activates the first section. If that fails the remote may just have been moved: it is waited for once more.
SequenceResult Activate(const OperationContext& context, Link& link) {
    Reply reply{};
    if (ActivateFirstSection(reply, link) == ResultCode::success) return {};
    if (SequenceResult wait = WaitForRemote(context, link); wait.code != ResultCode::success) return wait;
    if (const auto code = ActivateFirstSection(reply, link); code != ResultCode::success) {
        return Failure(code, "The first section could not be activated", link, reply);
    }
    if (const auto code = ReleaseRemote(reply, link, ResultCode::releaseFailed);
        code != ResultCode::success) {
        return Failure(code, "The remote did not acknowledge the end of the conversation", link, reply);
    }
    return {};
}

// The section loop and what closes it.
SequenceResult WriteSections(const OperationContext& context, ProgressBar& progressBar, Link& link,
                             const Programme& programme, const CodeSet& codeSet,
                             const SectionOffsets& offsets) {
    std::uint8_t writtenMask = 0;
    SequenceResult status;
    std::string leftOut;
    for (std::size_t i = 0; i < offsets.count; ++i) {
        if (!IsWritten(i, offsets, programme)) continue;
        bool written = false;
        status = WriteSection(i, offsets.words[i], *codeSet[i], context, progressBar, link, written);
        if (written) {
            writtenMask = static_cast<std::uint8_t>(writtenMask + kSections[i].SectionMask);
        } else if (status.code == ResultCode::verificationFailed) {
            break;
        } else {
            leftOut += (leftOut.empty() ? "" : " ") + status.diagnostic;
        }
    }
    if (status.code != ResultCode::success) return status;
    Reply reply{};
    static_cast<void>(
        WriteSectionFlags(reply, static_cast<std::uint8_t>(writtenMask + kCloseProgramming), link));
    SequenceResult result = Activate(context, link);
    if (!leftOut.empty()) {
        result.diagnostic = "A section was left out. " + leftOut +
                            (result.diagnostic.empty() ? "" : " Then: ") + result.diagnostic;
    }
    return result;
}

}  // namespace

SequenceResult ProgramRemote(const OperationContext& context, ProgressBar& progressBar, Link& link,
                             const Programme& programme) {
    std::array<CodeSet, 2> codeSets;
    const std::array<SequenceResult, 2> setStatus{
        DecodeCodeLists(programme.LabelRecords, codeSets[0], programme.ListARecords, "A"),
        DecodeCodeLists(programme.LabelRecords, codeSets[1], programme.ListBRecords, "B")};
    for (const SequenceResult& status : setStatus) {
        if (status.code == ResultCode::unusableData) return status;
    }
    if (SequenceResult wait = WaitForRemote(context, link); wait.code != ResultCode::success) return wait;
    progressBar.SetValue(0);
    progressBar.SetMinimum(0);

    Reply reply{};
    std::uint8_t version = 0;
    if (const auto code = ReadRemoteVersion(reply, version, link, ResultCode::versionFailed);
        code != ResultCode::success) {
        return Failure(code, "The remote's version could not be read", link, reply);
    }
    const std::size_t setIndex = SplitVersion(version).VersionBuild < kFirstBuildWithListB ? 0 : 1;
    const CodeSet& codeSet = codeSets[setIndex];
    if (setStatus[setIndex].code != ResultCode::success) return setStatus[setIndex];

    std::int16_t total = 0;
    if (SequenceResult count = CountCodeBytes(codeSet, programme.LabelRecords, total);
        count.code != ResultCode::success) {
        return count;
    }
    if (total < 1) return {ResultCode::sectionTableFailed, "There are no code bytes to send."};
    progressBar.SetMaximum(total);

    SectionOffsets offsets;
    if (SequenceResult table = ReadSectionOffsets(offsets, link); table.code != ResultCode::success)
        return table;
    if (SequenceResult room = CheckRoom(offsets, programme, codeSet); room.code != ResultCode::success)
        return room;
    return WriteSections(context, progressBar, link, programme, codeSet, offsets);
}

}  // namespace vento
