// What the chain costs above the link: an exchange, the polls of the presence wait, a programming run, a
// load.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "allocations.h"
#include "panel/form_web.h"
#include "protocol/wait_for_remote.h"
#include "simulator/simulated_hid_host.h"
#include "support/fakes.h"
#include "usb/report_exchange.h"

namespace vento {
namespace {

// A transmitter that takes everything and answers every read at once with the same report.
class InstantHost final : public platform::HidHost {
  public:
    platform::Report answer{};

    void Search(const std::function<bool(std::string_view path)>& visit) override { visit("0"); }
    platform::OpenAnswer Open(std::string_view, platform::Wanted wanted) override {
        constexpr platform::HidIdentity kIdentity{1240, 1};
        return {wanted(kIdentity) ? platform::OpenOutcome::opened : platform::OpenOutcome::foreign, kIdentity,
                1};
    }
    platform::ReportTransfer Write(platform::HidHandle, const platform::Report& report) override {
        benchmark::DoNotOptimize(report.data());
        return {.whole = true, .error = 0, .bytes = report.size()};
    }
    platform::ReportTransfer Read(platform::HidHandle, platform::Report& report) override {
        report = answer;
        return {.whole = true, .error = 0, .bytes = platform::kReportPayload};
    }
    void Cancel(platform::HidHandle) override {}
    void Close(platform::HidHandle) override {}
};

// The calls that an exchange of one report each way makes on its host, without the exchange.
void BM_HostCallsAlone(benchmark::State& state) {
    InstantHost instant;
    platform::HidHost& host = instant;
    platform::Report report{};
    for (auto _ : state) {
        platform::OpenAnswer answer;
        host.Search([&](std::string_view path) {
            answer = host.Open(path, IsTransmitter);
            return false;
        });
        bool good = host.Write(answer.handle, report).whole;
        good &= host.Read(answer.handle, report).whole;
        host.Cancel(answer.handle);
        host.Close(answer.handle);
        benchmark::DoNotOptimize(good);
    }
}
BENCHMARK(BM_HostCallsAlone);

void BM_ExchangeReports(benchmark::State& state) {
    InstantHost host;
    const std::vector<std::uint8_t> frame(static_cast<std::size_t>(state.range(0)), 7);
    Reply reply{};
    Link link(host, IsTransmitter);
    const std::uint64_t before = bench::Allocations();
    for (auto _ : state)
        benchmark::DoNotOptimize(ExchangeReports(link, frame, reply).reportsRead);
    state.counters["allocations"] = static_cast<double>(bench::Allocations() - before);
}
BENCHMARK(BM_ExchangeReports)->Arg(7)->Arg(70);

// 20000 polls that are not good.
void BM_PollLoop(benchmark::State& state) {
    InstantHost host;
    test::FakeClock clock;
    Label label;
    Button cancel;
    ProgressBar bar;
    const OperationContext context{label, cancel, bar, "waiting", clock, [] {}};
    std::uint64_t during = 0;
    std::uint64_t polls = 0;
    for (auto _ : state) {
        Link link(host, IsTransmitter);
        const std::uint64_t before = bench::Allocations();
        benchmark::DoNotOptimize(WaitForRemote(context, link).code);
        during += bench::Allocations() - before;
        polls += link.reportsRead;
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(polls));
    state.counters["allocations/wait"] =
        static_cast<double>(during) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_PollLoop)->Unit(benchmark::kMillisecond);

std::string Programme(std::size_t length) {
    std::string text;
    for (int line = 0; line < 6; ++line) {
        text += std::to_string(line / 2 + 1) + ";label;7";
        for (std::size_t i = 1; i < length; ++i)
            text += "," + std::to_string(i % 256);
        text += ";;\n";
    }
    return text;
}

// A whole click on the program button: three lists of that many bytes on the simulator without latency.
void BM_ProgrammingRun(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    simulator::Scenario scenario;
    scenario.perReport = {};
    scenario.remote->sections = {0, 16384, 32768};
    test::FakeClock clock;
    test::FakeDesktop desktop;
    test::FakeFiles files;
    files.contents["p"] = Programme(length);
    simulator::SimulatedHidHost host(scenario, clock);
    FormWeb form({host, desktop, files, clock, platform::HidBackEnd::simulation});
    form.Form_Load("p");
    for (auto _ : state) {
        form.Command6_Click(0);
        if (form.LatestOutcome()->code != ResultCode::success) state.SkipWithError("the run failed");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(3 * length));
}
BENCHMARK(BM_ProgrammingRun)->Arg(1024)->Arg(2048)->Arg(4096)->Arg(8192)->Unit(benchmark::kMillisecond);

void BM_LoadLongestProgramme(benchmark::State& state) {
    test::FakeFiles files;
    std::string& text = files.contents["p"];
    for (int line = 0; line < 32767; ++line)
        text += std::to_string(line % 3 + 1) + ";label;1,2,3,4,5,6,7,8;x;y\n";
    std::array<ListView, kColumns> labels;
    std::array<ListView, kColumns> listsA;
    std::array<ListView, kColumns> listsB;
    Label path;
    Button button;
    for (auto _ : state) {
        const LoadResult load = Aprifilevento("p", files, {labels, listsA, listsB, path, button});
        if (load.problem) state.SkipWithError("the load failed");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_LoadLongestProgramme)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vento

BENCHMARK_MAIN();
