#include "console/console_machine.h"

#include <filesystem>
#include <system_error>

#include "console/failure.h"
#include "panel/message_table.h"
#include "platform/native.h"
#include "simulator/image.h"
#include "simulator/scenario.h"
#include "simulator/scenario_error.h"
#include "simulator/text_file.h"

namespace vento::console {
namespace {

simulator::Scenario ScenarioFor(const std::string& path) {
    return path.empty() ? simulator::Scenario{} : simulator::LoadScenario(path);
}

// A slip of the hand must not cost the file that is to be read.
void RequireOther(const std::string& trace, const std::filesystem::path& input) {
    std::error_code noSuchFile;
    if (std::filesystem::equivalent(simulator::PathFromUtf8(trace), input, noSuchFile)) {
        throw Failure(kWrongUsage, "The trace would overwrite " + simulator::Utf8(input) + ".");
    }
}

std::unique_ptr<simulator::SimulatedHidHost> MakeSimulatedHost(const Options& options,
                                                               platform::Clock& clock) {
    if (!options.simulate) return nullptr;
    try {
        const simulator::Scenario scenario = ScenarioFor(*options.simulate);
        if (options.trace) RequireOther(*options.trace, scenario.image);
        return std::make_unique<simulator::SimulatedHidHost>(scenario, clock);
    } catch (const simulator::ScenarioError& error) {
        throw Failure(kUnusableInput, *options.simulate + ": " + error.what());
    } catch (const platform::FileError& error) {
        throw Failure(kMissingInput, *options.simulate + ": " + error.what());
    }
}

std::optional<Trace> MakeTrace(const Options& options) {
    if (!options.trace) return std::nullopt;
    RequireOther(*options.trace, simulator::PathFromUtf8(options.file));
    if (options.simulate) RequireOther(*options.trace, simulator::PathFromUtf8(*options.simulate));
    return std::optional<Trace>(std::in_place, *options.trace);
}

}  // namespace

Language ChosenLanguage(const Options& options) {
    if (options.language) return *options.language;
    return LanguageFromAbbreviation(platform::NativeLanguageAbbreviation().value_or(""));
}

ConsoleMachine::ConsoleMachine(const Console& console)
    : files_(platform::MakeNativeFiles()),
      clock_(platform::MakeNativeClock()),
      simulated_(MakeSimulatedHost(console.options, *clock_)),
      native_(simulated_ ? nullptr : platform::MakeNativeHidHost()),
      trace_(MakeTrace(console.options)),
      hid_(simulated_ ? static_cast<platform::HidHost&>(*simulated_) : *native_, console.terminal,
           trace_ ? &*trace_ : nullptr),
      desktop_(console.terminal, console.notices, ChosenLanguage(console.options)) {}

void ConsoleMachine::Finish() {
    if (simulated_) {
        try {
            simulated_->SaveImage();
        } catch (const simulator::ImageError& error) {
            throw Failure(kFailedOutput, error.what());
        }
    }
    if (trace_ && trace_->Problem()) throw Failure(kFailedOutput, *trace_->Problem());
}

}  // namespace vento::console
