#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "console/recorded_trace.h"
#include "text/language.h"

namespace vento::console {

/// What the frame of a cycle is for. A byte means different things behind different commands.
enum class FrameKind : std::uint8_t {
    none,  ///< a look whether a transmitter is there
    timing,
    frameR,
    frameQ,
    presence,
    version,
    sectionCount,
    sectionTable,
    prefix,
    flags,
    openRead,
    memoryRange,
    state,
    activation,
    openFlags,
    flagValue,
    openWrite,
    blockHeader,
    blockData,
    openVerify,
    verifyRange,
    release,
    unknown,
};

/// For programs: "version", "blockHeader", ...
[[nodiscard]] std::string_view NameOf(FrameKind kind);

/// For people: "the version (6)".
[[nodiscard]] Sentence TitleOf(FrameKind kind);

/// A set of kinds.
class FrameKinds {
  public:
    FrameKinds(std::initializer_list<FrameKind> kinds = {}) {
        for (const FrameKind kind : kinds)
            bits_ |= Bit(kind);
    }
    [[nodiscard]] bool Has(FrameKind kind) const { return (bits_ & Bit(kind)) != 0; }
    [[nodiscard]] bool Empty() const { return bits_ == 0; }

  private:
    [[nodiscard]] static std::uint32_t Bit(FrameKind kind) { return 1U << static_cast<unsigned>(kind); }

    std::uint32_t bits_ = 0;
};

/// A cycle of a trace as the exchange of a frame.
struct RecordedExchange {
    std::uint64_t cycle = 0;
    FrameKind kind = FrameKind::none;
    std::vector<std::uint8_t> frame;      ///< as far as it went out; empty if nothing was to
    std::vector<std::uint8_t> sendBytes;  ///< of a frame for the remote
    std::uint16_t linkFactor = 0;         ///< likewise
    std::size_t replyCount = 0;           ///< likewise
    /// The status and the bytes behind it that were asked for; nothing if no reply came.
    std::optional<std::vector<std::uint8_t>> reply;
    std::optional<platform::HidIdentity> transmitter;
    bool whole = false;  ///< the trace has all of the cycle
    int error = 0;       ///< the system's, of a report that did not cross

    /// The trace begins within the cycle, or the transmitter was found.
    bool found = false;
    bool written = false;  ///< the whole frame went out

    [[nodiscard]] bool WantsReply() const { return replyCount > 0; }
    [[nodiscard]] std::uint8_t SendByte() const { return sendBytes.empty() ? 0 : sendBytes.front(); }
};

/// Puts the reports of a cycle together. `due` is what the protocol has next, which tells apart what looks
/// the same; where it has nothing to say the form of the frame does.
[[nodiscard]] RecordedExchange ReadExchange(const RecordedCycle& cycle, const FrameKinds& due);

/// What the frame carries, for people; empty where there is nothing to say.
[[nodiscard]] Sentence DescribeArguments(const RecordedExchange& exchange);

/// "TV, DTT", or a dash.
[[nodiscard]] std::string SectionsOf(std::uint8_t bits);

/// The section that a flag value announces; nothing if it is another.
[[nodiscard]] std::optional<std::size_t> AnnouncedSection(std::uint8_t flagValue);

/// The word that `bytes` begin with, high byte first.
[[nodiscard]] inline std::uint16_t WordOf(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8U | bytes[1]);
}

}  // namespace vento::console
