#include "simulator/scenario.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "simulator/scenario_error.h"
#include "support/scratch_folder.h"

namespace vento::simulator {
namespace {

TEST(Scenario, IsTakenOrRefusedWithThePlace) {
    std::string words(2 * Remote::kMemoryWords - 1, '7');  // a whole memory of them
    for (std::size_t i = 1; i < words.size(); i += 2)
        words[i] = ',';
    // And what the complaint begins with.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"interfaces": [{"vendorId": 65535, "productId": 65535}], "reportMicroseconds": 1000000,
             "remote": {"version": 255, "sections": [65535], "free": 255, "arrivesAtPoll": 4294967295},
             "faults": [{"cycle": 4294967295, "kind": "unplugged", "forMilliseconds": 3600000}]})",
         "none"},
        {R"({"remote": {"memory": {"9": [)" + words + "]}}}", "none"},
        {"{} {}", "expected JSON: "},
        {std::string(100'000, '['), "[0][0][0]"},
        {R"({"faults": [{}, {"cycle": 1, "cycle": 1}]})", "faults[1].cycle: expected this key once"},
        {R"({"remotes": 1})", "remotes: expected no other key than interfaces, remote, reportMicroseconds"},
        {R"({"reportMicroseconds": 18446744073709551617})", "reportMicroseconds: expected a whole number"},
        {R"({"image": "a\u0000b"})", "image: expected the name of a file"},
        {R"({"interfaces": [{"vendorId": 65536}]})", "interfaces[0].vendorId: expected a whole number"},
        {R"({"interfaces": [{"opens": 0}]})", "interfaces[0].opens: expected true or false, found 0"},
        {R"({"remote": "à"})", R"(remote: expected an object, or null for no remote, found "\u00e0")"},
        {R"({"remote": {"memory": {"01": []}}})", "remote.memory.01: expected a decimal offset"},
        {R"({"remote": {"memory": {"0": [3], "65535": [1, 2]}}})", "remote.memory.65535[1]: expected a word"},
        {R"({"faults": [{"cycle": 1}]})", "faults[0].kind: expected one of unplugged, refused, writeFails"},
        {R"({"faults": [{"kind": "refused"}]})", "faults[0].cycle: expected a whole number"},
        {R"({"faults": [{"kind": "refused", "cycle": 5, "through": 4}]})",
         "faults[0].through: expected a whole number from 5 to 4294967295, found 4"},
        {R"({"faults": [{"kind": "refused", "value": 1}]})", "faults[0].value: expected no other key"},
        {R"({"faults": [{"kind": "flip", "byte": 64}]})", "faults[0].byte: expected a whole number"},
    };
    for (const auto& [text, expected] : cases) {
        std::string complaint = "none";
        try {
            (void)ParseScenario(text, "");
        } catch (const ScenarioError& error) {
            complaint = error.what();
        }
        EXPECT_TRUE(complaint.starts_with(expected)) << text.substr(0, 200) << ": " << complaint;
    }
}

TEST(ScenarioFile, FindsItsImageBesideItAndCanBeReadOrNot) {
    const test::ScratchFolder folder;
    const std::string path = folder.Write("scenàrio.json", R"({"image": "à/image.json"})");
    EXPECT_EQ(LoadScenario(path).image, folder / "à/image.json");
    EXPECT_THROW((void)LoadScenario(folder.Write("long.json", std::string(5'000'000, ' '))), ScenarioError);
    EXPECT_THROW((void)LoadScenario(folder.Path("")), platform::FileError);
}

}  // namespace
}  // namespace vento::simulator
