#include "console/console_machine.h"

#include <filesystem>
#include <system_error>

#include "console/failure.h"
#include "console/input.h"
#include "platform/native.h"
#include "simulator/image.h"
#include "simulator/scenario.h"
#include "storage/json.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

constexpr Phrase kSameAsLog{"Il registro è lo stesso file di {0}.", "The log is the same file as {0}."};

// Nothing that a run writes beside its results is `other`. Throws Failure.
void RequireOutputsOther(const Options& options, const std::string& other) {
    constexpr Phrase kOverwritten{"Verrebbe sovrascritto {0}.", "{0} would be overwritten."};
    if (options.trace) RequireOther(*options.trace, other, kOverwritten);
    if (options.log) RequireOther(*options.log, other, kSameAsLog);
}

simulator::Scenario ScenarioFor(const Options& options) {
    if (!options.simulate->empty()) return simulator::LoadScenario(*options.simulate);
    simulator::Scenario plain;
    if (options.series) {
        // Nobody takes a simulated remote away, so it goes by itself, and the next one comes.
        constexpr std::uint32_t kStays = 50;
        constexpr std::uint32_t kAway = 400;
        plain.remote->leavesAfterPolls = kStays;
        plain.remote->awayForPolls = kAway;
    }
    return plain;
}

// What `--simulate` names may be a trace, too.
std::unique_ptr<RecordedHidHost> MakeRecordedHost(const Console& console) {
    const auto& simulate = console.options.simulate;
    if (!simulate || simulate->empty()) return nullptr;
    const std::string text = ReadFile(*simulate);
    if (!LooksLikeTrace(text)) return nullptr;
    return std::make_unique<RecordedHidHost>(TraceOf(text, *simulate), *simulate);
}

std::unique_ptr<simulator::SimulatedHidHost> MakeSimulatedHost(const Options& options,
                                                               platform::Clock& clock) {
    if (!options.simulate) return nullptr;
    try {
        const simulator::Scenario scenario = ScenarioFor(options);
        RequireOutputsOther(options, Utf8FromPath(scenario.image));
        return std::make_unique<simulator::SimulatedHidHost>(scenario, clock);
    } catch (const storage::ContentError& error) {
        throw Failure(kUnusableInput, About(*options.simulate, error));
    } catch (const platform::FileError& error) {
        throw Failure(kMissingInput, About(*options.simulate, error));
    }
}

// The first of the files that a run writes, so that all of them are looked at here.
std::optional<TraceFile> MakeTrace(const Options& options, platform::Clock& clock) {
    for (const std::string& argument : options.arguments)
        RequireOutputsOther(options, argument);
    if (options.simulate) RequireOutputsOther(options, *options.simulate);
    if (!options.trace) return std::nullopt;
    if (options.log) RequireOther(*options.log, *options.trace, kSameAsLog);
    return std::optional<TraceFile>(std::in_place, *options.trace, clock);
}

}  // namespace

void ConsoleDesktop::Yield() {
    EndIfDemanded(terminal_);
    if (onYield_) onYield_();
    const int interrupts = terminal_.Interrupts();
    if (interrupts == interruptsHandled_) return;
    interruptsHandled_ = interrupts;
    if (onInterrupt_) onInterrupt_();
}

void ConsoleDesktop::ShowMessage(std::string_view text, std::string_view detail) {
    latestMessage_ = text;
    latestDetail_ = detail;
    notices_.Error(text, detail);
}

std::optional<std::string> ConsoleDesktop::LanguageAbbreviation() {
    return language_ == Language::italian ? "ITA" : "ENG";
}

ConsoleMachine::ConsoleMachine(const Console& console)
    : files_(platform::MakeNativeFiles()),
      clock_(platform::MakeNativeClock()),
      recorded_(MakeRecordedHost(console)),
      simulated_(recorded_ ? nullptr : MakeSimulatedHost(console.options, *clock_)),
      native_(recorded_ || simulated_ ? nullptr : platform::MakeNativeHidHost()),
      trace_(MakeTrace(console.options, *clock_)),
      chosen_(Host(), console.options.transmitter),
      hid_(chosen_, trace_ ? &trace_->Lines() : nullptr,
           [&terminal = console.terminal] { EndIfDemanded(terminal); }),
      desktop_(console.terminal, console.notices, console.language) {}

platform::HidHost& ConsoleMachine::Host() {
    if (recorded_) return *recorded_;
    if (simulated_) return *simulated_;
    return *native_;
}

void ConsoleMachine::Finish() {
    if (simulated_) {
        try {
            simulated_->SaveImage();
        } catch (const simulator::ImageError& error) {
            throw Failure(kFailedOutput, error.Reason());
        }
    }
    if (trace_ && trace_->Problem()) throw Failure(kFailedOutput, *trace_->Problem());
}

}  // namespace vento::console
