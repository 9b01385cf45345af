#include "simulator/scenario.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "simulator/scenario_error.h"
#include "support/scratch_folder.h"

namespace vento::simulator {
namespace {

TEST(Scenario, LeavesOutWhatIsAsInThePlainSimulation) {
    for (const char* text : {"{}", R"({"remote": {}})", R"({"interfaces": [{}]})"}) {
        const Scenario scenario = ParseScenario(text, "");
        ASSERT_EQ(scenario.interfaces.size(), 1U);
        EXPECT_EQ(scenario.interfaces[0].vendorId, 1240);
        EXPECT_TRUE(scenario.interfaces[0].opens);
        ASSERT_TRUE(scenario.remote);
        EXPECT_EQ(scenario.remote->version, 196);
        EXPECT_EQ(scenario.remote->sections, (std::vector<std::uint16_t>{256, 4352, 8448}));
        EXPECT_EQ(scenario.remote->contents, (RemoteContents{.free = 112, .memory = {}}));
        EXPECT_EQ(scenario.remote->arrivesAtPoll, 0U);
        EXPECT_EQ(scenario.perReport, std::chrono::milliseconds(1));
        EXPECT_TRUE(scenario.image.empty());
        EXPECT_TRUE(scenario.faults.empty());
    }
}

TEST(Scenario, TakesTheLargestOfEverything) {
    const Scenario scenario = ParseScenario(R"({
        "interfaces": [{"vendorId": 65535, "productId": 65535}, {"vendorId": 11025, "opens": false}],
        "remote": {"version": 255, "sections": [65535, 0], "free": 255, "arrivesAtPoll": 4294967295,
                   "memory": {"65535": [1, 255], "256": [193]}},
        "reportMicroseconds": 1000000,
        "faults": [{"cycle": 4294967295, "kind": "unplugged", "forMilliseconds": 3600000}]})",
                                            "");
    EXPECT_EQ(scenario.interfaces[0].productId, 65535);
    EXPECT_FALSE(scenario.interfaces[1].opens);
    EXPECT_EQ(scenario.remote->sections, (std::vector<std::uint16_t>{65535, 0}));
    EXPECT_EQ(scenario.remote->contents,
              (RemoteContents{.free = 255, .memory = {{65535, {{1, 52}, {255, 52}}}, {256, {{193, 52}}}}}));
    EXPECT_EQ(scenario.remote->arrivesAtPoll, 4294967295U);
    EXPECT_EQ(scenario.perReport, std::chrono::seconds(1));
    EXPECT_EQ(scenario.faults.at(0).through, 4294967295U);
}

struct BadScenario {
    std::string text;
    std::string complaint;  ///< how the error begins
};

/// Checks that each of these is refused as it says.
void ExpectComplaints(const std::vector<BadScenario>& cases) {
    for (const BadScenario& each : cases) {
        std::string complaint = "none";
        try {
            (void)ParseScenario(each.text, "");
        } catch (const ScenarioError& error) {
            complaint = error.what();
        }
        EXPECT_EQ(complaint.substr(0, each.complaint.size()), each.complaint) << each.text.substr(0, 200);
        EXPECT_LT(complaint.size(), 400U);
    }
}

const std::string kNumber = "expected a whole number from ";

TEST(BadScenario, ThatIsNoStrictJson) {
    for (const std::string text : {"", "{", "{} {}", "{} // no", "{\"image\": \"\xff\"}",
                                   R"({"reportMicroseconds": NaN})", R"({"reportMicroseconds": 1e999})"}) {
        ExpectComplaints({{text, "expected JSON: "}});
    }
    ExpectComplaints({
        {std::string(100'000, '['), "[0][0][0]"},
        {R"({"remote": {}, "remote": null})", "remote: expected this key once"},
        {R"({"faults": [{}, {"cycle": 1, "cycle": 1}]})", "faults[1].cycle: expected this key once"},
    });
}

TEST(BadScenario, WithAKeyOrValueThatDoesNotFit) {
    ExpectComplaints({
        {"[]", "the whole: expected an object, found a list of 0"},
        {R"({"remotes": 1})",
         "remotes: expected no other key than interfaces, remote, reportMicroseconds, image"},
        {R"({"reportMicroseconds": -1})", "reportMicroseconds: " + kNumber + "0 to 1000000, found -1"},
        {R"({"reportMicroseconds": 1.0})", "reportMicroseconds: " + kNumber},
        {R"({"reportMicroseconds": 18446744073709551617})", "reportMicroseconds: " + kNumber},
        {R"({"reportMicroseconds": true})", "reportMicroseconds: " + kNumber + "0 to 1000000, found true"},
        {R"({"image": ""})", "image: expected the name of a file"},
        {R"({"image": "a\u0000b"})", "image: expected the name of a file"},
        {R"({"interfaces": null})", "interfaces: expected a list of 255 interfaces at the most, found null"},
        {R"({"interfaces": [{}, 7]})", "interfaces[1]: expected an object, found 7"},
        {R"({"interfaces": [{"vendor": 1}]})", "interfaces[0].vendor: expected no other key than vendorId"},
        {R"({"interfaces": [{"vendorId": 65536}]})", "interfaces[0].vendorId: " + kNumber + "0 to 65535"},
        {R"({"interfaces": [{"opens": 0}]})", "interfaces[0].opens: expected true or false, found 0"},
        {R"({"remote": "none"})", "remote: expected an object, or null for no remote, found \"none\""},
        {R"({"remote": {"sections": [1, "à"]}})",
         "remote.sections[1]: " + kNumber + R"(0 to 65535, found "\u00e0")"},
        {R"({"remote": {"arrivesAtPoll": 0}})", "remote.arrivesAtPoll: " + kNumber + "1 to"},
    });
}

TEST(BadScenario, WithAMemoryThatCantBe) {
    for (const std::string key : {"65536", "-1", "01", "", "1 ", "0x1"}) {
        ExpectComplaints({{R"({"remote": {"memory": {")" + key + R"(": []}}})",
                           "remote.memory." + key + ": expected a decimal offset"}});
    }
    std::string words = "7";
    for (std::size_t i = 1; i < Remote::kMemoryWords; ++i)
        words += ",7";
    const std::string most = R"({"remote": {"memory": {"9": [)";
    ExpectComplaints({
        {R"({"remote": {"memory": []}})", "remote.memory: expected an object"},
        {R"({"remote": {"memory": {"1": [[0, 1]]}}})", "remote.memory.1[0]: " + kNumber},
        {R"({"remote": {"memory": {"1": [1, 2], "2": [3]}}})", "remote.memory.2[0]: expected a word that no"},
        {R"({"remote": {"memory": {"0": [3], "65535": [1, 2]}}})", "remote.memory.65535[1]: expected a word"},
        {most + words + "]}}}", "none"},
        {most + words + ",7]}}}",
         "remote.memory.9: expected a list of 65536 words at the most, found a list of 65537"},
    });
}

TEST(BadScenario, WithAFaultThatCantBe) {
    const std::vector<BadScenario> faults = {
        {R"("cycle": 1)",
         ".kind: expected one of unplugged, refused, writeFails, readFails, status, reply, flip"},
        {R"("kind": "refused")", ".cycle: " + kNumber + "1 to 4294967295, found nothing"},
        {R"("kind": "refused", "cycle": 0)", ".cycle: " + kNumber},
        {R"("kind": "refused", "cycle": 5, "through": 4)", ".through: " + kNumber + "5 to"},
        {R"("kind": "refused", "cycle": 1, "value": 1)",
         ".value: expected no other key than cycle, through, kind, f"},
        {R"("kind": "writeFails", "cycle": 1, "report": 0)", ".report: " + kNumber + "1 to"},
        {R"("kind": "reply", "cycle": 1, "bytes": [1, 300])", ".bytes[1]: " + kNumber},
        {R"("kind": "flip", "cycle": 1, "byte": 64, "mask": 1)", ".byte: " + kNumber + "0 to 63"},
        {R"("kind": "unplugged", "cycle": 1, "when": "later")",
         ".when: expected one of open, write, read, found \"l"},
        {R"("kind": "unplugged", "cycle": 1, "forMilliseconds": 3600001)", ".forMilliseconds: " + kNumber},
    };
    for (const BadScenario& each : faults) {
        ExpectComplaints({{R"({"faults": [{)" + each.text + "}]}", "faults[0]" + each.complaint}});
    }
}

TEST(ScenarioFile, FindsItsImageBesideIt) {
    const test::ScratchFolder folder;
    const std::string path = folder.Write("scenàrio.json", R"({"image": "à/image.json"})");
    EXPECT_EQ(LoadScenario(path).image, folder / "à/image.json");
}

TEST(ScenarioFile, ThatCantBeReadIsToldApartFromABadOne) {
    const test::ScratchFolder folder;
    EXPECT_THROW((void)LoadScenario(folder.Write("bad.json", "[]")), ScenarioError);
    EXPECT_THROW((void)LoadScenario(folder.Write("long.json", std::string(5'000'000, ' '))), ScenarioError);
    EXPECT_THROW((void)LoadScenario((folder / "missing.json").string()), platform::FileError);
    EXPECT_THROW((void)LoadScenario((folder / "").string()), platform::FileError);
}

}  // namespace
}  // namespace vento::simulator
