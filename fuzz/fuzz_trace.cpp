#include "command.h"
#include "console/explained_trace.h"
#include "console/recorded_host.h"
#include "trace/traced_hid_host.h"

namespace vento::fuzzing {
namespace {

struct Outcome {
    std::string message;
    std::string diagnostic;
    std::string text;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

/// An operation of the panel with this host. A wait that goes on and on is cancelled.
Outcome Operate(platform::HidHost& host, test::FakeClock& clock, const std::string& programme,
                std::size_t index) {
    test::FakeDesktop desktop;
    test::FakeFiles files;
    files.contents["p"] = programme;
    FormWeb form({host, desktop, files, clock, platform::HidBackEnd::simulation});
    form.Form_Load("p");
    desktop.onYield = [&](int yield) {
        if (yield > 40) form.Cancel();
    };
    if (index == 0) form.Command6_Click(0);
    if (index == 1) form.Command2_Click();
    if (index == 2) form.Verify();
    const auto& outcome = form.LatestOutcome();
    // A trace tells of a transmitter that could not be opened as of one that is not there.
    const bool isThere = outcome && outcome->code != ResultCode::noTransmitter;
    return {form.Label1.Caption(), isThere ? outcome->diagnostic.In(Language::english) : "",
            form.Text1.Text()};
}

/// The trace of an operation that the fuzzer's bytes have gone wrong, or not; explained and replayed.
std::string TakeTrace(FuzzedDataProvider& data) {
    test::FakeClock clock;
    const simulator::Scenario scenario = TakeScenario(data);
    const std::string programme = TakeProgramme(data);
    const auto index = data.ConsumeIntegralInRange<std::size_t>(0, 2);
    std::string text = data.ConsumeRandomLengthString(40);
    simulator::SimulatedHidHost simulated(scenario, clock);
    WatchedHidHost watched(simulated, scenario, clock);
    std::string written;
    Trace trace([&written](std::string_view line) { written += line; }, clock);
    TracedHidHost traced(watched, &trace, {});
    const Outcome outcome = Operate(traced, clock, programme, index);
    const console::RecordedTrace recorded = console::ParseTrace(written);
    const auto explained = console::ExplainTrace(recorded);
    Require(watched.Harmed(0) || scenario.interfaces.size() > 1 || !explained.firstDeviation ||
                outcome.text != "0",
            "nothing deviates where nothing went wrong");
    console::RecordedHidHost replayed(recorded, "trace");
    const Outcome again = Operate(replayed, clock, programme, index);
    Require(again == outcome, "a replay comes to the same: " + outcome.message + ", " + outcome.diagnostic +
                                  " and not " + again.message + ", " + again.diagnostic);

    // And a piece of it, with bytes of the fuzzer's in between.
    const std::size_t from = data.ConsumeIntegralInRange<std::size_t>(0, written.size());
    const std::size_t to = data.ConsumeIntegralInRange<std::size_t>(from, written.size());
    const std::size_t behind = data.ConsumeIntegralInRange<std::size_t>(to, written.size());
    return written.substr(from, to - from) + text + written.substr(behind);
}

void Try(std::string_view text) {
    const console::RecordedTrace trace = console::ParseTrace(text);
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
    Require(trace.lines <= lines && trace.cycles.size() <= trace.lines, "a line is a step");
    const auto answer = RunCommand(console::kExplainCommand, text, {0});
    RequireHarmless(answer.text);
    Require(answer.fields["steps"].size() <= trace.cycles.size(), "a cycle is a step in words at the most");
    test::FakeClock clock;
    console::RecordedHidHost host(trace, "trace");
    try {
        (void)Operate(host, clock, "1;name;1,2,3;;\n1;name;4,5,6;;\n", lines % 3);
    } catch (const console::Failure& failure) {
        Require(failure.Status() == console::kUnusableInput, "a trace that ends is unusable input");
        RequireReadable(failure.Reason());
    }
}

}  // namespace
}  // namespace vento::fuzzing

/// The bytes as a trace, or as an operation that leaves one. The first says which.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vento::fuzzing;
    if (size == 0) return 0;
    FuzzedDataProvider provider(data + 1, size - 1);
    const bool isText = data[0] == '{';
    const std::string text =
        isText ? std::string(reinterpret_cast<const char*>(data), size) : TakeTrace(provider);
    try {
        Try(text);
    } catch (const vento::storage::ContentError& error) {
        RequireReadable(error.Reason());
    }
    return 0;
}
