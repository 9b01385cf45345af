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

    test::ScratchFolder folder_;
    Scenario scenario_ = [this] {
        Scenario scenario;
        scenario.image = folder_ / "image.json";
        scenario.remote->contents.memory[7] = {{9, 52}};
        return scenario;
    }();
};

/// Writes the words 1, 52 and 2, 3 at 256, and says that section TV holds a programme.
void Program(Wire& wire) {
    Play(wire,
         {{{1}, 1, {0, 1}},
          {{1, 0, 4}, 0, {}},
          {{1, 52, 2, 3}, 1, {0, static_cast<std::uint8_t>(254 + 255 + 251 + 254 + 203 + 253 + 252)}, 4},
          {{7}, 1, {0, 7}},
          {{144}, 2, {0, 144}}});
}

TEST_F(RemoteImage, LivesOnBetweenRuns) {
    {
        Wire wire(scenario_);
        Program(wire);
        wire.host.SaveImage();
        EXPECT_EQ(Content(), "{ \"free\": 96,\n  \"memory\": { \"7\": [9],\n  \"256\": [1,[2,3]] } }\n");
    }
    scenario_.remote->contents = {.free = 255, .memory = {{1, {{2, 52}}}}};
    const Wire wire(scenario_);
    EXPECT_EQ(wire.host.TheRemote()->Contents(),
              (RemoteContents{.free = 96, .memory = {{7, {{9, 52}}}, {256, {{1, 52}, {2, 3}}}}}));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / ""), {}), 1);
}

TEST_F(RemoteImage, IsSavedAlsoWhenNobodyAsks) {
    { const Wire wire(scenario_); }
    EXPECT_EQ(Content(), "{ \"free\": 112,\n  \"memory\": { \"7\": [9] } }\n");
}

TEST_F(RemoteImage, IsLeftAsItStandsIfNothingHasChanged) {
    const std::string text = R"({"memory":{},"free":112})";
    (void)folder_.Write("image.json", text);
    { const Wire wire(scenario_); }
    EXPECT_EQ(Content(), text);
}

TEST_F(RemoteImage, HoldsAFullMemory) {
    scenario_.remote->contents.memory = {{0, std::vector<Word>(Remote::kMemoryWords, {255, 52})}};
    { const Wire wire(scenario_); }
    Scenario next;
    next.image = scenario_.image;
    EXPECT_EQ(Wire(next).host.TheRemote()->Contents(), scenario_.remote->contents);
}

TEST_F(RemoteImage, ThatIsALinkIsReplacedWhereItPoints) {
    (void)folder_.Write("kept.json", R"({"memory":{},"free":0})");
    std::error_code noLinks;
    fs::create_symlink("kept.json", scenario_.image, noLinks);
    if (noLinks) GTEST_SKIP() << "no links here";
    {
        Wire wire(scenario_);
        Program(wire);
    }
    EXPECT_TRUE(fs::is_symlink(scenario_.image));
    EXPECT_NE(Content("kept.json").find("[1,[2,3]]"), std::string::npos);
}

TEST_F(RemoteImage, ThatIsCorruptIsRefusedAndKept) {
    for (const std::string text :
         {"", "{", "{}", R"({"free": 1})", R"({"memory": {}})", R"({"free": 256, "memory": {}})",
          R"({"free": 1, "memory": {"1": [[2]]}})", R"({"free": 1, "memory": {"1": [[2, 3, 4]]}})",
          R"({"free": 1, "memory": {"1": [[2, 300]]}})", R"({"free": 1, "memory": {}, "version": 1})"}) {
        (void)folder_.Write("image.json", text);
        EXPECT_THROW(const Wire wire(scenario_), ScenarioError) << text;
        EXPECT_EQ(Content(), text);
    }
}

TEST_F(RemoteImage, NeedsAPlaceForAFile) {
    for (const fs::path& bad : {folder_ / "no folder/image.json", folder_ / ""}) {
        scenario_.image = bad;
        EXPECT_THROW(const Wire wire(scenario_), ScenarioError);
    }
    scenario_.remote.reset();  // with nothing to keep the image is of no concern
    EXPECT_NO_THROW(const Wire wire(scenario_));
}

TEST_F(RemoteImage, ThatCantBeWrittenIsToldOfAndLeavesNothingBehind) {
    fs::create_directory(folder_ / "gone");
    scenario_.image = folder_ / "gone/image.json";
    Wire wire(scenario_);
    fs::remove(folder_ / "gone");
    EXPECT_THROW(wire.host.SaveImage(), ImageError);
    fs::create_directories(scenario_.image);  // a folder where the file should be
    EXPECT_THROW(wire.host.SaveImage(), ImageError);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "gone"), {}), 1);
}

}  // namespace
}  // namespace vento::simulator
