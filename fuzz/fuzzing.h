#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "panel/form_web.h"
#include "simulator/simulated_hid_host.h"
#include "support/fakes.h"
#include "support/scratch_folder.h"

/// What the fuzz targets share.
namespace vento::fuzzing {

/// Ends the target where something does not hold that has to.
inline void Require(bool holds, std::string_view what) {
    if (holds) return;
    std::fprintf(stderr, "This does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

/// What a person is told has a text in each language, and does not go on and on whatever the input was.
inline void RequireReadable(const Sentence& sentence) {
    constexpr std::size_t kLongest = 2000;
    for (const Language language : {Language::italian, Language::english}) {
        const std::string& text = sentence.In(language);
        Require(!text.empty() && text.size() < kLongest, "a reason is a text of some length: " + text);
    }
}

/// What is shown may hold line feeds, and nothing else that steers a terminal.
inline void RequireHarmless(std::string_view text) {
    for (const char each : text)
        Require(each == '\n' || static_cast<unsigned char>(each) >= 32, "what is shown has no controls");
}

/// The folder of the target, which lives as long as it does.
inline const test::ScratchFolder& Folder() {
    static const test::ScratchFolder folder;
    return folder;
}

/// What the fuzzer's bytes do to a programme: whole lists, broken ones and no programme at all.
inline std::string TakeProgramme(FuzzedDataProvider& data) {
    if (data.ConsumeIntegralInRange(0, 7) == 0) return data.ConsumeRandomLengthString(600);
    std::string text;
    for (const char* column : {"1", "1", "2", "2", "3", "3"}) {
        const auto kind = data.ConsumeIntegral<std::uint8_t>();
        if (kind % 8 == 0) continue;
        text.append(column).append(kind % 16 == 1 ? "; ;" : ";name;");
        const std::size_t count = kind % 4 == 1 ? 120 + kind : kind / 4;
        for (std::size_t i = 0; i < count; ++i)
            text += (i == 0 ? "" : ",") + std::to_string((kind + 7 * i) % 256);
        text += kind == 255 ? ",256;;\n" : ";;\n";
    }
    return text;
}

/// Faults of the link, one behind the other, each in one cycle or in many.
inline std::vector<simulator::Fault> TakeFaults(FuzzedDataProvider& data) {
    namespace fault = simulator::fault;
    std::vector<simulator::Fault> faults(data.ConsumeIntegralInRange<std::size_t>(0, 8));
    std::uint32_t cycle = 0;
    for (simulator::Fault& each : faults) {
        const auto kind = data.ConsumeIntegral<std::uint8_t>();
        const auto detail = data.ConsumeIntegral<std::uint8_t>();
        const std::uint32_t length = data.ConsumeIntegral<std::uint8_t>();
        fault::Reply reply;
        std::ranges::copy(data.ConsumeBytes<std::uint8_t>(detail % 10U), reply.payload.begin());
        const auto bit = static_cast<std::uint8_t>(1U << detail / 8U % 8U);
        const std::array<simulator::FaultKind, 7> kinds{
            fault::Unplugged{simulator::UnplugMoment(detail % 3)},
            fault::Refused{},
            fault::WriteFails{detail % 4U + 1},
            fault::ReadFails{},
            fault::Status{detail},
            reply,
            fault::Flip{static_cast<std::uint8_t>(detail % 8U), bit}};
        each.kind = kinds.at(kind % kinds.size());
        each.cycle = cycle + 1U + data.ConsumeIntegral<std::uint8_t>();
        each.through = each.cycle + (length < 128 ? length % 4 : (length - 128) * (length - 128));
        cycle = each.through;
    }
    return faults;
}

/// A simulated machine of which the fuzzer's bytes decide what it has.
inline simulator::Scenario TakeScenario(FuzzedDataProvider& data) {
    simulator::Scenario scenario;
    scenario.perReport = {};
    scenario.interfaces.clear();
    constexpr std::array<std::uint16_t, 4> kVendors{1240, 11025, 1133, 1240};
    const auto bits = data.ConsumeIntegral<std::uint8_t>();
    scenario.interfaces.push_back({.vendorId = kVendors[bits & 1U]});
    if ((bits & 2U) != 0) scenario.interfaces.push_back({.vendorId = kVendors[bits >> 2U & 3U]});
    scenario.remote->version = data.ConsumeIntegral<std::uint8_t>();
    if ((bits & 16U) != 0) {
        scenario.remote->sections.resize(data.ConsumeIntegralInRange<std::size_t>(0, 4));
        for (std::uint16_t& section : scenario.remote->sections)
            section = data.ConsumeIntegral<std::uint16_t>();
    }
    scenario.faults = TakeFaults(data);
    if ((bits & 32U) != 0) scenario.remote->arrivesAtPoll = data.ConsumeIntegral<std::uint16_t>() % 600;
    return scenario;
}

/// Counts what a simulated machine is asked for, and gives a transfer that fails its second.
class WatchedHidHost final : public platform::ForwardingHidHost {
  public:
    WatchedHidHost(platform::HidHost& host, const simulator::Scenario& scenario, test::FakeClock& clock)
        : ForwardingHidHost(host), faults_(scenario.faults), clock_(clock) {}

    std::uint64_t cycles = 0;
    std::uint64_t reports = 0;  ///< that were to go out
    int open = 0;

    /// Whether a fault of this kind, or of one behind it, lay in the cycles behind `cycle`.
    [[nodiscard]] bool Harmed(std::uint64_t cycle, const simulator::FaultKind& first = {}) const {
        return std::ranges::any_of(faults_, [&](const simulator::Fault& each) {
            return each.kind.index() >= first.index() && each.cycle <= cycles && each.through > cycle;
        });
    }

    void Search(const std::function<bool(std::string_view path)>& visit) override {
        ++cycles;
        ForwardingHidHost::Search(visit);
    }
    [[nodiscard]] platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override {
        const auto answer = ForwardingHidHost::Open(path, wanted);
        if (answer.outcome == platform::OpenOutcome::opened) ++open;
        return answer;
    }
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override {
        ++reports;
        return Timed(ForwardingHidHost::Write(device, report));
    }
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override {
        return Timed(ForwardingHidHost::Read(device, report));
    }
    void Close(platform::HidHandle device) override {
        --open;
        ForwardingHidHost::Close(device);
    }

  private:
    platform::ReportTransfer Timed(const platform::ReportTransfer& transfer) {
        if (!transfer.whole) clock_.Sleep(std::chrono::seconds(1));
        return transfer;
    }

    std::vector<simulator::Fault> faults_;
    test::FakeClock& clock_;
};

}  // namespace vento::fuzzing
