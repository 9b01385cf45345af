#include "simulator/scenario.h"

#include <gtest/gtest.h>

#include "storage/json.h"
#include "support/scratch_folder.h"

namespace vento::simulator {
namespace {

TEST(Scenario, IsTakenOrRefusedWithThePlace) {
    // And what the complaint begins with.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"interfaces": [{"vendorId": 65535, "productId": 65535}], "reportMicroseconds": 1000000,
             "remote": {"version": 255, "sections": [65535], "free": 255, "arrivesAtPoll": 4294967295},
             "faults": [{"cycle": 4294967295, "kind": "unplugged", "forMilliseconds": 3600000}]})",
         "none"},
        {"{} {}", "expected JSON: "},
        {std::string(100'000, '['), "[0][0][0]"},
        {R"({"faults": [{}, {"cycle": 1, "cycle": 1}]})", "faults[1].cycle: expected this key once"},
        {R"({"remotes": 1})", "remotes: expected no other key than interfaces, remote, reportMicroseconds"},
        {R"({"reportMicroseconds": 18446744073709551617})", "reportMicroseconds: expected a whole number"},
        {R"({"remote": {"memory": {"0": [3], "65535": [1, 2]}}})", "remote.memory.65535[1]: expected a word"},
        {R"({"faults": [{"kind": "refused", "cycle": 5, "through": 4}]})",
         "faults[0].through: expected a whole number from 5 to 4294967295, found 4"},
        {R"({"faults": [{"kind": "flip", "byte": 64}]})", "faults[0].byte: expected a whole number"},
    };
    for (const auto& [text, expected] : cases) {
        std::string complaint = "none";
        try {
            (void)ParseScenario(text, "");
        } catch (const storage::ContentError& error) {
            complaint = error.what();
        }
        EXPECT_TRUE(complaint.starts_with(expected)) << text.substr(0, 200) << ": " << complaint;
    }
    const test::ScratchFolder folder;
    const std::string path = folder.Write("scenàrio.json", R"({"image": "à/image.json"})");
    EXPECT_EQ(LoadScenario(path).image, folder / "à/image.json") << "it lies beside the scenario";
}

}  // namespace
}  // namespace vento::simulator
