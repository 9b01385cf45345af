#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "protocol/commands.h"
#include "protocol/sequence.h"
#include "usb/gestione_hid.h"

/// Asking a remote what it holds, in two conversations: what it is, and then the names of its sections.
namespace vento {

/// Bytes at the head of a section that hold its name.
inline constexpr std::size_t kNameLength = 8;

/// The name of the section whose memory begins with `memory`, eight bytes or what there is of them, as a
/// read-back shows it: a character is stored with 128 added to its code, and what can't be one is a blank.
[[nodiscard]] std::string DecodeName(std::span<const std::uint8_t> memory);

/// What a remote holds, as far as it was read.
struct RemoteReading {
    std::optional<RemoteVersion> version;
    std::optional<std::uint8_t> flags;  ///< a section's bit is set while it holds no programme
    SectionOffsets offsets;
    /// By section; nothing where its head could not be read.
    std::array<std::optional<std::string>, kSections.size()> names;
    std::string readText;  ///< a line for each section that could be read
};

/// Waits for the remote and reads what a programme would meet: version, section offsets, section flags.
SequenceResult InspectRemote(const OperationContext& context, Link& link, RemoteReading& reading);

/// Waits for the remote and reads its version and section flags. `version` stays empty, and the result is
/// success all the same, if the remote does not acknowledge the end of the conversation.
SequenceResult ReadRemoteInfo(const OperationContext& context, Link& link, RemoteReading& reading);

/// Waits for the remote and makes a line for each section that could be read: its label, its name if it holds
/// a programme, carriage return and line feed. `readText` keeps what was read before a failure.
SequenceResult ReadRemoteCodes(const OperationContext& context, Link& link, RemoteReading& reading);

}  // namespace vento
