#include "simulator/image.h"

#include <iterator>

#include "simulator/wire.h"
#include "storage/json.h"
#include "support/scratch_folder.h"

namespace vento::simulator {
namespace {

namespace fs = std::filesystem;

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
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / ""), {}), 1);
}

TEST(RemoteImage, ThatCantBeReadOrWrittenIsToldOfAndKept) {
    const test::ScratchFolder folder;
    Wire wire(kScenario, folder / "");
    for (const std::string text : {"", R"({"free": 1})", R"({"free": 1, "memory": {"1": [[2]]}})"}) {
        (void)folder.Write("image.json", text);
        EXPECT_THROW(Wire(kScenario, folder / ""), storage::ContentError) << text;
        EXPECT_EQ(folder.Read("image.json"), text);
    }
    fs::remove(folder / "image.json");
    fs::create_directory(folder / "image.json");  // where the file should be
    EXPECT_THROW(wire.host.SaveImage(), ImageError);
}

}  // namespace
}  // namespace vento::simulator
