#include "simulator/scenario.h"

#include <iterator>

#include "simulator/image.h"
#include "simulator/wire.h"
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

constexpr const char* kScenario = R"({"image": "image.json", "remote": {"memory": {"1": [2]}}})";

TEST(RemoteImage, LivesOnBetweenRuns) {
    const test::ScratchFolder folder;
    const std::string before = R"({"memory":{"7":[9]},"free":112})";
    (void)folder.Write("image.json", before);
    Wire(kScenario, folder / "").Play("8 = 0 8; 5 = 0 5 112");
    EXPECT_EQ(folder.Read("image.json"), before) << "it was left as it stood";
    Wire(kScenario, folder / "").Play("1 = 0 1; 1 0 4; 1 52 2 3 x4 = 0 186; 7 = 0 7; 144 = 0 144 0");
    EXPECT_EQ(folder.Read("image.json"),
              "{ \"free\": 96,\n  \"memory\": { \"7\": [9],\n  \"256\": [1,[2,3]] } }\n");
    Wire wire(kScenario, folder / "");
    wire.Play("8 = 0 8; 5 = 0 5 96; 2 = 0 2; 1 0 0 1 = 0 194");
    EXPECT_EQ(wire.host.TheRemote()->Contents().memory, (WordRuns{{7, {{9, 52}}}, {256, {{1, 52}, {2, 3}}}}));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / ""), {}), 1);
}

TEST(RemoteImage, ThatCantBeReadOrWrittenIsToldOfAndKept) {
    const test::ScratchFolder folder;
    Wire wire(kScenario, folder / "");
    for (const std::string text : {"", R"({"free": 1})", R"({"free": 1, "memory": {"1": [[2]]}})"}) {
        (void)folder.Write("image.json", text);
        EXPECT_THROW(Wire(kScenario, folder / ""), storage::ContentError) << text;
        EXPECT_EQ(folder.Read("image.json"), text);
    }
    std::filesystem::remove(folder / "image.json");
    std::filesystem::create_directory(folder / "image.json");  // where the file should be
    EXPECT_THROW(wire.host.SaveImage(), ImageError);
}

}  // namespace
}  // namespace vento::simulator
