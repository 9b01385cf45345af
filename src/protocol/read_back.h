#pragma once

#include <cstdint>
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

/// Waits for the remote and reads its version and section flags. `version` stays as it was, and the result is
/// success all the same, if the remote does not acknowledge the end of the conversation.
[[nodiscard]] SequenceResult ReadRemoteInfo(RemoteVersion& version, std::uint8_t& flags,
                                            const OperationContext& context, Link& link);

/// Waits for the remote and makes a line for each section that could be read: its label, its name if it holds
/// a programme, carriage return and line feed. `readText` keeps what was read before a failure.
[[nodiscard]] SequenceResult ReadRemoteCodes(std::string& readText, const OperationContext& context,
                                             Link& link);

}  // namespace vento
