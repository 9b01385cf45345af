#include "console/recorded_host.h"

#include <algorithm>
#include <span>
#include <string>

#include "console/failure.h"

namespace vento::console {
namespace {

using platform::OpenAnswer;
using platform::OpenOutcome;
using platform::Report;
using platform::ReportTransfer;

constexpr platform::HidHandle kHandle = 1;

std::string Hex(const Report& report) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const std::uint8_t byte : std::span(report).subspan<1>()) {
        hex += kDigits[byte >> 4U];
        hex += kDigits[byte & 15U];
    }
    hex.erase(1 + std::min(hex.find_last_not_of('0'), hex.size() - 1));
    return hex;
}

ReportTransfer TransferOf(const RecordedReport& report) {
    return {
        .whole = report.ok, .error = report.error, .bytes = report.ok ? report.report.size() : report.bytes};
}

}  // namespace

void RecordedHidHost::Differ(const Sentence& difference) const {
    throw Failure(kUnusableInput,
                  Fill({"{0}: la conversazione non è più quella della traccia, ciclo {1}: {2}.",
                        "{0}: the conversation is no longer that of the trace, cycle {1}: {2}."},
                       {name_, std::to_string(Cycle().number), difference}));
}

void RecordedHidHost::End() const {
    const std::string latest = trace_.cycles.empty() ? "0" : std::to_string(trace_.cycles.back().number);
    throw Failure(kUnusableInput, Fill({"{0}: la traccia finisce col ciclo {1}, e l'operazione no.",
                                        "{0}: the trace ends with cycle {1}, and the operation does not."},
                                       {name_, latest}));
}

void RecordedHidHost::Search(const std::function<bool(std::string_view path)>& visit) {
    if (searches_ > 0 && reports_ < Cycle().reports.size()) {
        Differ(Phrase{"nella traccia segue ancora un report", "in the trace another report follows"});
    }
    if (searches_ == trace_.cycles.size()) End();
    ++searches_;
    reports_ = 0;
    if (!Cycle().beginsHere) {
        Differ(Phrase{"la traccia comincia a metà del ciclo", "the trace begins in the middle of the cycle"});
    }
    if (Cycle().found) visit(name_);
}

OpenAnswer RecordedHidHost::Open(std::string_view /*path*/, platform::Wanted wanted) {
    const auto& identity = Cycle().found;
    if (!identity) return {.outcome = OpenOutcome::failed, .identity = {}};
    if (!wanted(*identity)) return {.outcome = OpenOutcome::foreign, .identity = identity};
    return {.outcome = OpenOutcome::opened, .identity = identity, .handle = kHandle};
}

const RecordedReport& RecordedHidHost::Next(bool outgoing) {
    const auto& reports = Cycle().reports;
    if (reports_ == reports.size() && !Cycle().closed) End();
    if (reports_ == reports.size() || reports[reports_].outgoing != outgoing) {
        Differ(outgoing ? Phrase{"ora esce un report che la traccia non ha",
                                 "a report now goes out that the trace does not have"}
                        : Phrase{"ora si attende una risposta che la traccia non ha",
                                 "a reply is now waited for that the trace does not have"});
    }
    return reports[reports_++];
}

ReportTransfer RecordedHidHost::Write(platform::HidHandle /*device*/, const Report& report) {
    const RecordedReport& recorded = Next(true);
    if (!std::ranges::equal(std::span(report).subspan<1>(), std::span(recorded.report).subspan<1>())) {
        Differ(Fill({"ora esce {0}, nella traccia {1}; forse il programma era un altro",
                     "{0} now goes out, in the trace {1}; it may have been another programme"},
                    {Hex(report), Hex(recorded.report)}));
    }
    return TransferOf(recorded);
}

ReportTransfer RecordedHidHost::Read(platform::HidHandle /*device*/, Report& report) {
    const RecordedReport& recorded = Next(false);
    if (recorded.ok) report = recorded.report;
    return TransferOf(recorded);
}

}  // namespace vento::console
