// panel_endurance [RUNS]: as many operations of one panel on one simulated machine; of ten six program, two
// read, one verifies and one is cancelled in its wait.

#include <string>

#include "endurance.h"
#include "panel/form_web.h"
#include "simulator/simulated_hid_host.h"
#include "support/fakes.h"

int main(int argc, char** argv) {
    using namespace vento;
    simulator::Scenario scenario;
    scenario.perReport = {};
    test::FakeClock clock;
    test::FakeDesktop desktop;
    test::FakeFiles files;
    for (const char* column : {"1;TV;", "1;;", "2;DTT;", "2;;", "3;SAT;", "3;;"}) {
        files.contents["p"] += column;
        for (int i = 0; i < 300; ++i)
            files.contents["p"] += std::to_string(i % 256) + (i < 299 ? "," : ";;\n");
    }
    simulator::SimulatedHidHost host(scenario, clock);
    FormWeb form({host, desktop, files, clock, platform::HidBackEnd::simulation});
    form.Form_Load("p");
    return bench::Endure(argc > 1 ? std::stoul(argv[1]) : 100'000, [&](std::size_t run) {
        desktop.yields = 0;
        files.sectionBuffers.clear();  // what the fake notes is no memory of the panel
        desktop.onYield = [&](int yield) {
            if (run % 10 == 3 && yield == 5) form.Cancel();
        };
        switch (run % 10) {
            case 0:
                form.DropFile("p");
                form.Verify();
                break;
            case 1:
            case 2:
                form.Command2_Click();
                break;
            default:
                form.Command6_Click(0);
        }
        return form.LatestOutcome()->code == (run % 10 == 3 ? ResultCode::cancelled : ResultCode::success);
    });
}
