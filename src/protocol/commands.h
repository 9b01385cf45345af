#pragma once

#include <cstdint>
#include <span>

#include "protocol/link.h"
#include "protocol/result_code.h"

/// The commands of the remote, each a short fixed run of frames. A command has worked only if its reply says
/// so: status 0 and the echo of the command byte. No command is sent twice. `failCode` is what the caller
/// wants to hear of a failure. The reply of the last frame stays in `reply` throughout, so that a failure can
/// be told in detail.
namespace vento {

/// The command bytes. Behind the prefix 8 some mean something else.
namespace command {
inline constexpr std::uint8_t kRelease = 0;
inline constexpr std::uint8_t kBlockWrite = 1;
inline constexpr std::uint8_t kBlockVerify = 2;
inline constexpr std::uint8_t kSectionCount = 4;
inline constexpr std::uint8_t kSectionTable = 5;
inline constexpr std::uint8_t kVersion = 6;
inline constexpr std::uint8_t kWriteFlags = 7;
inline constexpr std::uint8_t kPrefix = 8;
inline constexpr std::uint8_t kPrefixedBlockRead = 1;
inline constexpr std::uint8_t kPrefixedState = 2;
inline constexpr std::uint8_t kPrefixedFlags = 5;
inline constexpr std::uint8_t kPresence = 165;
}  // namespace command

/// Whether `reply` is a good one to the command byte `commandByte`.
[[nodiscard]] bool IsGoodReply(const Reply& reply, std::uint8_t commandByte);

/// Sends one command byte. `success` means that a transmitter was found; whether the command worked is told
/// by `reply`. `refused` if there was no transmitter. With a `replyCount` of 0 no reply is read.
ResultCode SendCommand(Reply& reply, std::uint8_t commandByte, std::uint8_t replyCount, Link& link);

/// Sends the prefix 8 and then the command; `refused` unless both are echoed.
[[nodiscard]] ResultCode SendPrefixedCommand(Reply& reply, std::uint8_t commandByte, Link& link,
                                             std::uint8_t replyCount);

/// Closes a conversation with the remote. A lost reply passes for a good one: zeros are what it looks like.
[[nodiscard]] ResultCode ReleaseRemote(Reply& reply, Link& link, ResultCode failCode);

/// Comes before each block that is written; `refused` on failure.
[[nodiscard]] ResultCode OpenBlockWrite(Reply& reply, Link& link);

/// Comes before each verify frame; `refused` on failure.
[[nodiscard]] ResultCode OpenBlockVerify(Reply& reply, Link& link);

/// How many sections the remote's memory has, as it says: any byte.
[[nodiscard]] ResultCode ReadSectionCount(Reply& reply, std::uint8_t& count, Link& link, ResultCode failCode);

/// The memory offset of each section, 1 to 3 words of 16 bits.
[[nodiscard]] ResultCode ReadSectionTable(Reply& reply, std::span<std::uint16_t> words, Link& link,
                                          ResultCode failCode);

/// The version byte: `VersionMajor` in bits 7 and 6, `VersionMinor` in 5 and 4, `VersionBuild` in the rest.
[[nodiscard]] ResultCode ReadRemoteVersion(Reply& reply, std::uint8_t& version, Link& link,
                                           ResultCode failCode);

/// Stores a flag value; `remoteNotDetected` on failure.
[[nodiscard]] ResultCode WriteSectionFlags(Reply& reply, std::uint8_t value, Link& link);

/// The flag byte of the sections: a section's bit is set while it holds no programme.
[[nodiscard]] ResultCode ReadSectionFlags(Reply& reply, std::uint8_t& flags, Link& link, ResultCode failCode);

/// Makes the first section that holds a programme the one in use; `activationFailed` on failure.
[[nodiscard]] ResultCode ActivateFirstSection(Reply& reply, Link& link);

/// The byte that `ActivateFirstSection` derives from the state byte: its low four bits are the index of the
/// first section whose bit is clear.
[[nodiscard]] std::uint8_t ActivationByte(std::uint8_t state);

/// Reads `memory.size()` (1 to 8) bytes from a word offset of the remote's memory. Fails only where the
/// commands before the block frame do; if the block itself is lost, `memory` is zeros.
[[nodiscard]] ResultCode ReadRemoteBlock(std::uint16_t offset, std::span<std::uint8_t> memory, Link& link,
                                         ResultCode failCode);

}  // namespace vento
