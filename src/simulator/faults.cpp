#include "simulator/faults.h"

#include <algorithm>

namespace vento::simulator {

template <class Kind, class Action>
void FaultList::ForEach(std::uint64_t cycle, Action action) const {
    for (const Fault& each : faults_) {
        if (cycle < each.cycle || cycle > each.through) continue;
        if (const auto* kind = std::get_if<Kind>(&each.kind)) action(*kind);
    }
}

bool FaultList::Unplugs(std::uint64_t cycle, UnplugMoment moment) const {
    // Who goes in the middle of the first cycle and is not back by a time of its own is absent in the others.
    return std::ranges::any_of(faults_, [&](const Fault& each) {
        const auto* const kind = std::get_if<fault::Unplugged>(&each.kind);
        if (kind == nullptr || cycle < each.cycle || cycle > each.through) return false;
        const bool isGone = cycle > each.cycle && !kind->absence;
        return (isGone ? UnplugMoment::open : kind->when) == moment;
    });
}

std::optional<std::chrono::milliseconds> FaultList::Absence(std::uint64_t cycle) const {
    std::optional<std::chrono::milliseconds> longest;
    ForEach<fault::Unplugged>(cycle, [&](const auto& kind) { longest = std::max(longest, kind.absence); });
    return longest;
}

bool FaultList::Refuses(std::uint64_t cycle) const {
    bool refuses = false;
    ForEach<fault::Refused>(cycle, [&](const auto&) { refuses = true; });
    return refuses;
}

bool FaultList::FailsWrite(std::uint64_t cycle, std::uint64_t report) const {
    bool fails = report > 1 && Unplugs(cycle, UnplugMoment::write);
    ForEach<fault::WriteFails>(cycle, [&](const auto& kind) { fails |= report >= kind.report; });
    return fails;
}

bool FaultList::FailsRead(std::uint64_t cycle) const {
    bool fails = Unplugs(cycle, UnplugMoment::write) || Unplugs(cycle, UnplugMoment::read);
    ForEach<fault::ReadFails>(cycle, [&](const auto&) { fails = true; });
    return fails;
}

void FaultList::Alter(std::uint64_t cycle, std::optional<Payload>& report) const {
    ForEach<fault::Status>(cycle, [&](const auto& kind) {
        if (report) report->front() = kind.value;
    });
    ForEach<fault::Reply>(cycle, [&](const auto& kind) { report = kind.payload; });
    ForEach<fault::Flip>(cycle, [&](const auto& kind) {
        if (report) (*report)[kind.byte] ^= kind.mask;
    });
}

}  // namespace vento::simulator
