#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
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
    if ((bits & 32U) != 0) scenario.remote->arrivesAtPoll = data.ConsumeIntegral<std::uint16_t>() % 600;
    return scenario;
}

/// A transmitter that is good but for the cycles in which the fuzzer's bytes have it do something else, for
/// one cycle or for many.
class HostileHidHost final : public platform::ForwardingHidHost {
  public:
    enum class Harm : std::uint8_t { none, absent, notOpened, writeFails, readFails, status, reply, flip };

    HostileHidHost(platform::HidHost& host, FuzzedDataProvider& data, test::FakeClock& clock)
        : ForwardingHidHost(host), data_(data), clock_(clock) {
        Plan();
    }

    std::uint64_t cycles = 0;
    std::uint64_t reports = 0;  ///< that were to go out
    int open = 0;
    bool harmed = false;  ///< something went wrong
    bool forged = false;  ///< a reply was another than the remote's

    void Search(const std::function<bool(std::string_view path)>& visit) override {
        ++cycles;
        writes_ = 0;
        if (left_ > 0) {
            --left_;
            harm_ = Harm::none;
        } else if (through_ > 0) {
            --through_;
            harm_ = next_;
        } else {
            Plan();
        }
        if (!Does(Harm::absent)) ForwardingHidHost::Search(visit);
    }
    [[nodiscard]] platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override {
        auto answer = ForwardingHidHost::Open(path, wanted);
        if (answer.outcome != platform::OpenOutcome::opened) return answer;
        if (Does(Harm::notOpened)) {
            ForwardingHidHost::Close(answer.handle);
            constexpr std::array kOutcomes{platform::OpenOutcome::forbidden, platform::OpenOutcome::busy,
                                           platform::OpenOutcome::held, platform::OpenOutcome::noBandwidth,
                                           platform::OpenOutcome::failed};
            return {.outcome = kOutcomes[detail_ % kOutcomes.size()], .identity = answer.identity};
        }
        ++open;
        return answer;
    }
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override {
        ++reports;
        if (writes_++ == detail_ % 4U && Does(Harm::writeFails)) {
            clock_.Sleep(std::chrono::seconds(1));
            return {.whole = false, .error = detail_, .bytes = detail_ / 4U};
        }
        return ForwardingHidHost::Write(device, report);
    }
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override {
        platform::ReportTransfer transfer = ForwardingHidHost::Read(device, report);
        if (Does(Harm::readFails)) transfer = {.whole = false, .error = detail_, .bytes = detail_ / 4U};
        if (Does(Harm::reply)) {
            report = reply_;
            transfer = {.whole = true, .error = 0, .bytes = platform::kReportPayload};
        } else if (transfer.whole && Does(Harm::status)) {
            report[1] = detail_;
        } else if (transfer.whole && Does(Harm::flip)) {
            report.at(1 + detail_ % 8U) ^= static_cast<std::uint8_t>(1U << detail_ / 8U % 8U);
        }
        if (!transfer.whole) clock_.Sleep(std::chrono::seconds(1));
        return transfer;
    }
    void Close(platform::HidHandle device) override {
        --open;
        ForwardingHidHost::Close(device);
    }

  private:
    /// Whether this is the harm of the cycle, which is then done.
    bool Does(Harm harm) {
        if (harm_ != harm) return false;
        harmed = true;
        forged = forged || harm >= Harm::status;
        return true;
    }

    /// What comes next: so many good cycles, and then a harm for so many.
    void Plan() {
        harm_ = Harm::none;
        left_ = data_.remaining_bytes() == 0 ? ~0U : data_.ConsumeIntegral<std::uint8_t>();
        next_ = static_cast<Harm>(data_.ConsumeIntegral<std::uint8_t>() % 8);
        through_ = data_.ConsumeIntegral<std::uint8_t>();
        through_ = through_ < 128 ? through_ % 4 : (through_ - 128) * (through_ - 128);
        detail_ = data_.ConsumeIntegral<std::uint8_t>();
        if (next_ != Harm::reply) return;
        const auto bytes = data_.ConsumeBytes<std::uint8_t>(detail_ % 10U);
        std::ranges::copy(bytes, reply_.begin() + 1);
    }

    FuzzedDataProvider& data_;
    test::FakeClock& clock_;
    Harm harm_ = Harm::none;
    Harm next_ = Harm::none;
    std::uint32_t left_ = 0;
    std::uint32_t through_ = 0;
    std::uint8_t detail_ = 0;
    platform::Report reply_{};
    std::size_t writes_ = 0;  ///< in this cycle
};

}  // namespace vento::fuzzing
