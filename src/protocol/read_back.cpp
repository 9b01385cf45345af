#include "protocol/read_back.h"

#include <algorithm>
#include <array>

#include "protocol/commands.h"
#include "protocol/section_table.h"
#include "protocol/sections.h"
#include "protocol/wait_for_remote.h"

namespace vento {

std::string DecodeName(std::span<const std::uint8_t> memory) {
    std::string name;
    for (const std::uint8_t stored : memory.first(std::min(memory.size(), kNameLength))) {
        const int code = stored - 128;
        name.push_back(code > 31 && code < 127 ? static_cast<char>(code) : ' ');
    }
    return name;
}

RemoteVersion SplitVersion(std::uint8_t version) {
    return {static_cast<std::uint8_t>(version >> 6), static_cast<std::uint8_t>((version >> 4) & 3),
            static_cast<std::uint8_t>(version & 15)};
}

SequenceResult ReadRemoteInfo(RemoteVersion& version, std::uint8_t& flags, const OperationContext& context,
                              Link& link) {
    if (SequenceResult wait = WaitForRemote(context, link); wait.code != ResultCode::success) return wait;
    Reply reply{};
    std::uint8_t versionByte = 0;
    if (const auto code = ReadRemoteVersion(reply, versionByte, link, ResultCode::versionFailed);
        code != ResultCode::success) {
        return Failure(code, "The remote's version could not be read", link, reply);
    }
    if (const auto code = ReadSectionFlags(reply, flags, link, ResultCode::sectionFlagsFailed);
        code != ResultCode::success) {
        return Failure(code, "The section flags could not be read", link, reply);
    }
    if (ReleaseRemote(reply, link, ResultCode::releaseFailed) == ResultCode::success) {
        version = SplitVersion(versionByte);
    }
    return {};
}

SequenceResult ReadRemoteCodes(std::string& readText, const OperationContext& context, Link& link) {
    readText.clear();
    if (SequenceResult wait = WaitForRemote(context, link); wait.code != ResultCode::success) return wait;
    SectionOffsets offsets;
    if (SequenceResult table = ReadSectionOffsets(offsets, link); table.code != ResultCode::success)
        return table;
    Reply reply{};
    std::uint8_t flags = 0;
    if (const auto code = ReadSectionFlags(reply, flags, link, ResultCode::sectionFlagsFailed);
        code != ResultCode::success) {
        return Failure(code, "The section flags could not be read", link, reply);
    }
    for (std::size_t i = 0; i < offsets.count; ++i) {
        std::array<std::uint8_t, kNameLength> memory{};
        if (ReadRemoteBlock(offsets.words[i], memory, link, ResultCode::blockReadFailed) !=
            ResultCode::success) {
            continue;
        }
        readText += kSections[i].SectionLabel;
        if ((flags & kSections[i].SectionMask) == 0) readText += DecodeName(memory);
        readText += "\r\n";
    }
    if (const auto code = ReleaseRemote(reply, link, ResultCode::releaseFailed);
        code != ResultCode::success) {
        return Failure(code, "The remote did not acknowledge the end of the conversation", link, reply);
    }
    return {};
}

}  // namespace vento
