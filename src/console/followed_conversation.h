#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "console/recorded_exchange.h"
#include "protocol/commands.h"

namespace vento::console {

/// One conversation of a trace as far as it was followed: where it stands, and what the protocol has next.
struct FollowedConversation {
    enum class Purpose : std::uint8_t { unknown, program, read, verify };

    FrameKinds due;         ///< what the protocol has next; nothing once it has no more
    bool followed = false;  ///< false as long as it is not known where the conversation stands
    Purpose purpose = Purpose::unknown;
    std::uint16_t linkFactor = 1;
    bool mayEnd = false;        ///< the operation may end here too
    std::size_t goodPolls = 0;  ///< in a row, of the latest wait
    std::size_t badPolls = 0;   ///< likewise
    std::size_t waits = 0;
    std::size_t looks = 0;  ///< for a transmitter, before the first frame
    bool joined = false;    ///< the trace begins in the latest wait
    RemoteVersion version;
    SectionOffsets offsets;
    std::size_t sectionsRead = 0;
    bool readingCodes = false;
    std::uint8_t state = 0;
    // Of the section that is being written:
    std::optional<std::size_t> section;
    std::optional<std::size_t> latest;  ///< that was announced
    bool fromBegin = false;             ///< the trace has all of it
    std::size_t begin = 0;
    std::size_t words = 0;      ///< that were sent
    std::uint8_t check = 0;     ///< over them
    std::uint8_t verified = 0;  ///< masks of the sections that were
    std::vector<std::uint8_t> header;

    /// The operator may cancel a wait, and a programme that can't be sent ends a run behind the version.
    [[nodiscard]] bool MayEnd() const;

    /// What a search that found nothing stands for, where several frames are due: the one that comes first.
    [[nodiscard]] FrameKind Likeliest() const;

    /// The byte behind the status that tells a good reply; nothing where any will do.
    [[nodiscard]] std::optional<std::uint8_t> ExpectedByte(const RecordedExchange& exchange) const;

    /// A look for a transmitter begins a new conversation.
    void TakeLook(bool found);

    void BeginWait();
    /// True once the wait is over.
    [[nodiscard]] bool TakePoll(bool good, std::uint16_t factor);

    /// Goes on behind any other exchange; `good` if it was answered as it should have been.
    void Advance(const RecordedExchange& exchange, bool good);

  private:
    [[nodiscard]] FrameKinds DueAfterWait() const;
    void Next(FrameKinds kinds, bool operationMayEnd = false);
    [[nodiscard]] bool ComesBack() const;
    void AdvanceFlagValue(const RecordedExchange& exchange);
    void AdvanceBlocks(const RecordedExchange& exchange, bool good);
    void AdvanceVerify(FrameKind kind, bool good);
    void FindSection(std::uint16_t offset);
    void AdvancePrefixed(FrameKind kind, bool good);
    [[nodiscard]] FrameKinds AfterFailedPrefix() const;
    void NextSectionToRead();
};

}  // namespace vento::console
