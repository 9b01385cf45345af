#include "simulator/image.h"

#include <iterator>

#include "simulator/scenario_error.h"
#include "simulator/text_file.h"
#include "simulator/wire.h"
#include "support/scratch_folder.h"

namespace vento::simulator {
namespace {

namespace fs = std::filesystem;

constexpr const char* kScenario = R"({"image": "image.json", "remote": {"memory": {"1": [2]}}})";

TEST(RemoteImage, LivesOnBetweenRunsWhereItsNamePoints) {
    const test::ScratchFolder folder;
    const std::string before = R"({"memory":{"7":[9]},"free":112})";
    (void)folder.Write("kept.json", before);
    std::error_code noLinks;
    fs::create_symlink("kept.json", folder / "image.json", noLinks);
    if (noLinks) (void)folder.Write("image.json", before);
    Wire(kScenario, folder / "").Play("8 = 0 8; 5 = 0 5 112");
    EXPECT_EQ(ReadText(folder / "image.json"), before) << "it was left as it stood";
    Wire(kScenario, folder / "").Play("1 = 0 1; 1 0 4; 1 52 2 3 x4 = 0 186; 7 = 0 7; 144 = 0 144 0");
    EXPECT_EQ(ReadText(folder / "image.json"),
              "{ \"free\": 96,\n  \"memory\": { \"7\": [9],\n  \"256\": [1,[2,3]] } }\n");
    EXPECT_TRUE(noLinks || fs::is_symlink(folder / "image.json"));
    Wire wire(kScenario, folder / "");
    wire.Play("8 = 0 8; 5 = 0 5 96; 2 = 0 2; 1 0 0 1 = 0 194");
    EXPECT_EQ(wire.host.TheRemote()->Contents().memory, (WordRuns{{7, {{9, 52}}}, {256, {{1, 52}, {2, 3}}}}));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / ""), {}), 2);
}

TEST(RemoteImage, ThatCantBeReadOrWrittenIsToldOfAndKept) {
    const test::ScratchFolder folder;
    Wire wire(kScenario, folder / "");
    for (const std::string text : {"", R"({"free": 1})", R"({"free": 1, "memory": {"1": [[2]]}})",
                                   R"({"free": 1, "memory": {}, "version": 1})"}) {
        (void)folder.Write("image.json", text);
        EXPECT_THROW(Wire(kScenario, folder / ""), ScenarioError) << text;
        EXPECT_EQ(ReadText(folder / "image.json"), text);
    }
    EXPECT_THROW(Wire(kScenario, folder / "no folder"), ScenarioError);
    fs::remove(folder / "image.json");
    fs::create_directory(folder / "image.json");  // where the file should be
    EXPECT_THROW(Wire(kScenario, folder / ""), ScenarioError);
    EXPECT_THROW(wire.host.SaveImage(), ImageError);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / ""), {}), 1);
}

}  // namespace
}  // namespace vento::simulator
