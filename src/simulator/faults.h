#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "simulator/transmitter.h"

namespace vento::simulator {

/// Where in a cycle the transmitter goes.
enum class UnplugMoment : std::uint8_t {
    open,   ///< before it is opened
    write,  ///< after the first report was written
    read,   ///< before a report is read
};

/// The kinds of fault. Each does its harm in every cycle that the fault names.
namespace fault {

/// No transmitter is there, or it goes in the middle of the cycle.
struct Unplugged {
    UnplugMoment when = UnplugMoment::open;
    /// After this time it is back. Without, its absence ends with the cycles of the fault where searches are
    /// counted, and never where opens are: an absent device is not opened.
    std::optional<std::chrono::milliseconds> absence{};
};

/// A transmitter is there, and does not let itself be opened.
struct Refused {};

/// Neither this report, counted from 1, nor any behind it is written.
struct WriteFails {
    std::uint32_t report = 1;
};

struct ReadFails {};

/// The status byte of a report is this instead.
struct Status {
    std::uint8_t value = 0;
};

/// This payload is read instead of the report that is queued, and also where none is.
struct Reply {
    Payload payload{};
};

/// Inverts these bits in one byte of a report, counted from the status.
struct Flip {
    std::uint8_t byte = 0;  ///< 0 to 63
    std::uint8_t mask = 0;
};

}  // namespace fault

using FaultKind = std::variant<fault::Unplugged, fault::Refused, fault::WriteFails, fault::ReadFails,
                               fault::Status, fault::Reply, fault::Flip>;

/// A fault in the cycles from `cycle` to `through`, counted from 1.
struct Fault {
    std::uint32_t cycle = 1;
    std::uint32_t through = 1;
    FaultKind kind;
};

/// What goes wrong in which cycle. What a cycle is, a search or an open, is the user's affair.
class FaultList {
  public:
    explicit FaultList(std::vector<Fault> faults) : faults_(std::move(faults)) {}

    /// The transmitter goes at `moment` of this cycle.
    [[nodiscard]] bool Unplugs(std::uint64_t cycle, UnplugMoment moment) const;
    /// How long it then stays away, where the fault says so.
    [[nodiscard]] std::optional<std::chrono::milliseconds> Absence(std::uint64_t cycle) const;

    [[nodiscard]] bool Refuses(std::uint64_t cycle) const;

    /// The attempt to write the cycle's report of this number, counted from 1, fails.
    [[nodiscard]] bool FailsWrite(std::uint64_t cycle, std::uint64_t report) const;
    [[nodiscard]] bool FailsRead(std::uint64_t cycle) const;

    /// Makes of what is queued, which may be nothing, what is to be read in this cycle: `status` faults
    /// first, then `reply`, then `flip`.
    void Alter(std::uint64_t cycle, std::optional<Payload>& report) const;

  private:
    /// Calls `action` with each fault of this kind in this cycle.
    template <class Kind, class Action>
    void ForEach(std::uint64_t cycle, Action action) const;

    std::vector<Fault> faults_;
};

}  // namespace vento::simulator
