#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "protocol/link.h"
#include "protocol/operation_context.h"
#include "protocol/sequence_result.h"

/// Asking a remote what it holds, in two conversations: what it is, and then the names of its sections.
namespace vento {

struct RemoteVersion {
    std::uint8_t VersionMajor = 0;
    std::uint8_t VersionMinor = 0;
    std::uint8_t VersionBuild = 0;  ///< the one that matters: 0 can't be read back, below 3 takes lists A
};

[[nodiscard]] RemoteVersion SplitVersion(std::uint8_t version);

/// Bytes at the head of a section that hold its name.
inline constexpr std::size_t kNameLength = 8;

/// The name of the section whose memory begins with `memory`, eight bytes or what there is of them, as a
/// read-back shows it: a character is stored with 128 added to its code, and what can't be one is a blank.
[[nodiscard]] std::string DecodeName(std::span<const std::uint8_t> memory);

/// Waits for the remote and reads its version and section flags. `version` stays as it was, and the result is
/// success all the same, if the remote does not acknowledge the end of the conversation.
[[nodiscard]] SequenceResult ReadRemoteInfo(RemoteVersion& version, std::uint8_t& flags,
                                            const OperationContext& context, Link& link);

/// Waits for the remote and makes a line for each section that could be read: its label, its name if it holds
/// a programme, carriage return and line feed. `readText` keeps what was read before a failure.
[[nodiscard]] SequenceResult ReadRemoteCodes(std::string& readText, const OperationContext& context,
                                             Link& link);

}  // namespace vento
