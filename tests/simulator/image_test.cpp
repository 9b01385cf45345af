#include "simulator/image.h"

#include <fstream>
#include <iterator>

#include "simulator/scenario_error.h"
#include "simulator/wire.h"
#include "support/scratch_folder.h"

namespace vento::simulator {
namespace {

namespace fs = std::filesystem;

class RemoteImage : public testing::Test {
  protected:
    [[nodiscard]] std::string Content(std::string_view name = "image.json") const {
        std::ifstream stream(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    [[nodiscard]] std::ptrdiff_t FileCount(std::string_view name = "") const {
        return std::distance(fs::directory_iterator(folder_ / name), {});
    }
    /// Writes the words 1, 52 and 2, 3 at 256, and says that section TV holds a programme.
    void Program() const {
        Wire(kScenario, folder_ / "").Play("1 = 0 1; 1 0 4; 1 52 2 3 x4 = 0 186; 7 = 0 7; 144 = 0 144 0");
    }

    static constexpr const char* kScenario = R"({"image": "image.json", "remote": {"memory": {"7": [9]}}})";
    static constexpr const char* kProgrammed =
        "{ \"free\": 96,\n  \"memory\": { \"7\": [9],\n  \"256\": [1,[2,3]] } }\n";
    test::ScratchFolder folder_;
};

TEST_F(RemoteImage, LivesOnBetweenRuns) {
    Program();
    EXPECT_EQ(Content(), kProgrammed);
    Wire wire(R"({"image": "image.json", "remote": {"free": 255, "memory": {"1": [2]}}})", folder_ / "");
    wire.Play("8 = 0 8; 5 = 0 5 96; 2 = 0 2; 1 0 0 1 = 0 194");
    EXPECT_EQ(wire.host.TheRemote()->Contents().memory, (WordRuns{{7, {{9, 52}}}, {256, {{1, 52}, {2, 3}}}}));
    EXPECT_EQ(FileCount(), 1);
}

TEST_F(RemoteImage, IsLeftAsItStandsIfNothingHasChanged) {
    const std::string text = R"({"memory":{},"free":112})";
    (void)folder_.Write("image.json", text);
    Wire(kScenario, folder_ / "").Play("165 = 0 165");
    EXPECT_EQ(Content(), text);
}

TEST_F(RemoteImage, HoldsAFullMemory) {
    Remote remote({.contents = {.memory = {{0, std::vector<Word>(Remote::kMemoryWords, {255, 52})}}}});
    { const Image image(folder_ / "image.json", remote); }
    Remote next({});
    const Image image(folder_ / "image.json", next);
    EXPECT_EQ(next.Contents(), remote.Contents());
}

TEST_F(RemoteImage, ThatIsALinkIsReplacedWhereItPoints) {
    (void)folder_.Write("kept.json", R"({"memory":{"7":[9]},"free":112})");
    std::error_code noLinks;
    fs::create_symlink("kept.json", folder_ / "image.json", noLinks);
    if (noLinks) GTEST_SKIP() << "no links here";
    Program();
    EXPECT_TRUE(fs::is_symlink(folder_ / "image.json"));
    EXPECT_EQ(Content("kept.json"), kProgrammed);
}

TEST_F(RemoteImage, ThatIsCorruptIsRefusedAndKept) {
    for (const std::string text :
         {"", "{", "{}", R"({"free": 1})", R"({"memory": {}})", R"({"free": 256, "memory": {}})",
          R"({"free": 1, "memory": {"1": [[2]]}})", R"({"free": 1, "memory": {"1": [[2, 3, 4]]}})",
          R"({"free": 1, "memory": {"1": [[2, 300]]}})", R"({"free": 1, "memory": {}, "version": 1})"}) {
        (void)folder_.Write("image.json", text);
        EXPECT_THROW(Wire(kScenario, folder_ / ""), ScenarioError) << text;
        EXPECT_EQ(Content(), text);
    }
}

TEST_F(RemoteImage, NeedsAPlaceForAFile) {
    EXPECT_THROW(Wire(kScenario, folder_ / "no folder"), ScenarioError);
    EXPECT_THROW(Wire(R"({"image": "."})", folder_ / ""), ScenarioError);
    EXPECT_NO_THROW(Wire(R"({"image": ".", "remote": null})", folder_ / ""));  // nothing is to be kept
}

TEST_F(RemoteImage, ThatCantBeWrittenIsToldOfAndLeavesNothingBehind) {
    fs::create_directory(folder_ / "gone");
    Wire wire(kScenario, folder_ / "gone");
    fs::remove(folder_ / "gone");
    EXPECT_THROW(wire.host.SaveImage(), ImageError);
    fs::create_directories(folder_ / "gone/image.json");  // a folder where the file should be
    EXPECT_THROW(wire.host.SaveImage(), ImageError);
    EXPECT_EQ(FileCount("gone"), 1);
}

}  // namespace
}  // namespace vento::simulator
