#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "programme/programme_record.h"
#include "protocol/sequence.h"
#include "usb/gestione_hid.h"

/// The remote's memory as it tells of it, and the commands of the remote, each a short fixed run of frames. A
/// command has worked only if its reply says so: status 0 and the echo of the command byte. No command is
/// sent twice. A failed one gives the code that is its own, and says in its diagnostic what came back
/// instead.
namespace vento {

/// A section of the remote's memory holds the programme of the column of the same index.
struct Section {
    std::string_view name;     ///< of the column too
    std::uint8_t SectionMask;  ///< its bit in the remote's flag bytes
};

inline constexpr std::array kSections{Section{"TV", 16}, Section{"DTT", 32}, Section{"SAT", 64}};
static_assert(kSections.size() == kColumns, "every column has its section");

/// Where the sections of a remote's memory begin, in words of 16 bits.
struct SectionOffsets {
    std::array<std::uint16_t, kSections.size()> words{};
    std::size_t count = 0;  ///< sections that there are, 1 to 3

    [[nodiscard]] std::span<const std::uint16_t> All() const { return std::span(words).first(count); }
};

/// What the version byte of a remote says.
struct RemoteVersion {
    std::uint8_t VersionMajor = 0;
    std::uint8_t VersionMinor = 0;
    std::uint8_t VersionBuild = 0;  ///< the one that matters

    [[nodiscard]] static constexpr RemoteVersion FromByte(std::uint8_t byte) {
        return {static_cast<std::uint8_t>(byte >> 6), static_cast<std::uint8_t>((byte >> 4) & 3),
                static_cast<std::uint8_t>(byte & 15)};
    }
    [[nodiscard]] constexpr bool CanBeReadBack() const { return VersionBuild >= 1; }
    [[nodiscard]] constexpr bool TakesListB() const { return VersionBuild >= 3; }
};

/// "3.0.4"
[[nodiscard]] std::string VersionText(const RemoteVersion& version);

/// Words that a remote's memory has.
inline constexpr std::size_t kWordsOfMemory = 65536;

/// What comes back for a frame: the transmitter's status (0 is good), then the remote's bytes. A write or
/// read that failed leaves zeros.
using Reply = std::array<std::uint8_t, 9>;
static_assert(std::tuple_size_v<Reply> >= 2 + 2 * kSections.size(),
              "the reply with the section table holds a status, an echo and a word for each section");

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

/// How the latest exchange went: "no reply came", "the reply had status 1 and first byte 0", ...
[[nodiscard]] Sentence DescribeLatest(const Link& link, const Reply& reply);

/// Sends one command byte. `success` means that a transmitter was found; whether the command worked is told
/// by `reply`. `refused` if there was no transmitter. With a `replyCount` of 0 no reply is read.
ResultCode SendCommand(Link& link, Reply& reply, std::uint8_t commandByte, std::uint8_t replyCount);

/// Sends the prefix 8 and then the command; `refused` unless both are echoed.
[[nodiscard]] ResultCode SendPrefixedCommand(Link& link, Reply& reply, std::uint8_t commandByte,
                                             std::uint8_t replyCount);

/// Closes a conversation with the remote; `releaseFailed`. A lost reply passes for a good one: zeros are what
/// it looks like.
SequenceResult ReleaseRemote(Link& link);

/// Comes before each block that is written; `refused`.
SequenceResult OpenBlockWrite(Link& link);

/// Comes before each verify frame; `refused`.
SequenceResult OpenBlockVerify(Link& link);

/// How many sections the remote's memory has, as it says: any byte. `sectionCountFailed`.
SequenceResult ReadSectionCount(Link& link, std::uint8_t& count);

/// The memory offset of each section, as many as `words` has room for, 1 to 3. `sectionTableFailed`.
SequenceResult ReadSectionTable(Link& link, std::span<std::uint16_t> words);

/// Asks for the section count and then for the offsets. A count of 0 or above 3 is `unusableData`, and the
/// offsets are not asked for.
SequenceResult ReadSectionOffsets(Link& link, SectionOffsets& offsets);

/// `versionFailed`.
SequenceResult ReadRemoteVersion(Link& link, RemoteVersion& version);

/// Flag values are masks of sections and one of these.
inline constexpr std::uint8_t kAnnounceSection = 8;     ///< with the mask of the section that is written next
inline constexpr std::uint8_t kCloseProgramming = 128;  ///< with the masks of those that were written

/// Stores a flag value; `remoteNotDetected`.
SequenceResult WriteSectionFlags(Link& link, std::uint8_t value);

/// The flag byte of the sections: a section's bit is set while it holds no programme. `sectionFlagsFailed`.
SequenceResult ReadSectionFlags(Link& link, std::uint8_t& flags);

/// Makes the first section that holds a programme the one in use; `activationFailed`.
SequenceResult ActivateFirstSection(Link& link);

/// The byte that `ActivateFirstSection` derives from the state byte: its low four bits are the index of the
/// first section whose bit is clear.
[[nodiscard]] std::uint8_t ActivationByte(std::uint8_t state);

/// Reads `memory.size()` (1 to 8) bytes from a word offset of the remote's memory. `blockReadFailed` only
/// where the commands before the block frame fail; if the block itself is lost, `memory` is zeros.
SequenceResult ReadRemoteBlock(Link& link, std::uint16_t offset, std::span<std::uint8_t> memory);

}  // namespace vento
