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

TEST(Scenario, TakesEveryKeyAtItsWord) {
    const Scenario scenario = ParseScenario(R"({
        "interfaces": [{"vendorId": 1133, "productId": 65535}, {"vendorId": 11025, "opens": false}],
        "remote": {"version": 3, "sections": [65535, 0], "free": 255, "arrivesAtPoll": 12,
                   "memory": {"65535": [1, 2], "256": [193]}},
        "reportMicroseconds": 0,
        "image": "kept/image.json"})",
                                            "/a/folder");
    ASSERT_EQ(scenario.interfaces.size(), 2U);
    EXPECT_EQ(scenario.interfaces[0].productId, 65535);
    EXPECT_EQ(scenario.interfaces[1].vendorId, 11025);
    EXPECT_FALSE(scenario.interfaces[1].opens);
    EXPECT_EQ(scenario.remote->version, 3);
    EXPECT_EQ(scenario.remote->sections, (std::vector<std::uint16_t>{65535, 0}));
    EXPECT_EQ(scenario.remote->contents,
              (RemoteContents{.free = 255, .memory = {{65535, {{1, 52}, {2, 52}}}, {256, {{193, 52}}}}}));
    EXPECT_EQ(scenario.remote->arrivesAtPoll, 12U);
    EXPECT_EQ(scenario.perReport.count(), 0);
    EXPECT_EQ(scenario.image, "/a/folder/kept/image.json");
}

TEST(Scenario, TakesEveryKindOfFault) {
    const std::vector<Fault> faults = ParseScenario(R"({"faults": [
            {"cycle": 1, "kind": "unplugged"},
            {"cycle": 2, "through": 9, "kind": "unplugged", "when": "read", "forMilliseconds": 50},
            {"cycle": 3, "kind": "refused"},
            {"cycle": 4, "kind": "writeFails"},
            {"cycle": 4, "kind": "writeFails", "report": 2},
            {"cycle": 5, "kind": "readFails"},
            {"cycle": 6, "kind": "status", "value": 255},
            {"cycle": 7, "kind": "reply", "bytes": [0, 165]},
            {"cycle": 4294967295, "kind": "flip", "byte": 63, "mask": 128}]})",
                                                    "")
                                          .faults;
    ASSERT_EQ(faults.size(), 9U);
    EXPECT_EQ(faults[0].through, 1U);
    EXPECT_EQ(std::get<fault::Unplugged>(faults[0].kind).when, UnplugMoment::open);
    EXPECT_EQ(faults[1].through, 9U);
    EXPECT_EQ(std::get<fault::Unplugged>(faults[1].kind).when, UnplugMoment::read);
    EXPECT_EQ(std::get<fault::Unplugged>(faults[1].kind).absence, std::chrono::milliseconds(50));
    EXPECT_TRUE(std::holds_alternative<fault::Refused>(faults[2].kind));
    EXPECT_EQ(std::get<fault::WriteFails>(faults[3].kind).report, 1U);
    EXPECT_EQ(std::get<fault::WriteFails>(faults[4].kind).report, 2U);
    EXPECT_TRUE(std::holds_alternative<fault::ReadFails>(faults[5].kind));
    EXPECT_EQ(std::get<fault::Status>(faults[6].kind).value, 255);
    EXPECT_EQ(std::get<fault::Reply>(faults[7].kind).payload, (Payload{0, 165}));
    EXPECT_EQ(faults[8].cycle, 4294967295U);
    EXPECT_EQ(std::get<fault::Flip>(faults[8].kind).byte, 63);
    EXPECT_EQ(std::get<fault::Flip>(faults[8].kind).mask, 128);
}

TEST(Scenario, MayHaveNothingPluggedAndNoRemote) {
    const Scenario scenario = ParseScenario(R"({"interfaces": [], "remote": null})", "");
    EXPECT_TRUE(scenario.interfaces.empty());
    EXPECT_FALSE(scenario.remote);
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

/// A scenario with one fault that is complete but for `rest`.
std::string WithFault(const std::string& rest) {
    return R"({"faults": [{)" + rest + "}]}";
}

TEST(BadScenario, ThatIsNoStrictJson) {
    ExpectComplaints({
        {"", "expected JSON: "},
        {"{", "expected JSON: "},
        {"{} {}", "expected JSON: "},
        {"{} // no", "expected JSON: "},
        {"{\"image\": \"\xff\"}", "expected JSON: "},
        {R"({"reportMicroseconds": NaN})", "expected JSON: "},
        {R"({"reportMicroseconds": 1e999})", "expected JSON: "},
        {std::string(100'000, '['), "[0][0][0]"},
        {R"({"remote": {}, "remote": null})", "remote: expected this key once"},
        {R"({"faults": [{}, {"cycle": 1, "cycle": 1}]})", "faults[1].cycle: expected this key once"},
    });
}

TEST(BadScenario, WithAKeyOrValueThatDoesNotFit) {
    ExpectComplaints({
        {"[]", "the whole: expected an object, found a list of 0"},
        {R"({"remotes": {}})",
         "remotes: expected no other key than interfaces, remote, reportMicroseconds, image, faults, found "
         "an "
         "object"},
        {R"({"reportMicroseconds": -1})", "reportMicroseconds: " + kNumber + "0 to 1000000, found -1"},
        {R"({"reportMicroseconds": 1.0})", "reportMicroseconds: " + kNumber},
        {R"({"reportMicroseconds": 1000001})", "reportMicroseconds: " + kNumber},
        {R"({"reportMicroseconds": 18446744073709551617})", "reportMicroseconds: " + kNumber},
        {R"({"reportMicroseconds": true})", "reportMicroseconds: " + kNumber + "0 to 1000000, found true"},
        {R"({"image": 1})", "image: expected a text, found 1"},
        {R"({"image": ""})", "image: expected the name of a file"},
        {R"({"image": "a\u0000b"})", "image: expected the name of a file"},
        {R"({"interfaces": null})", "interfaces: expected a list of 255 interfaces at the most, found null"},
        {R"({"interfaces": [{}, 7]})", "interfaces[1]: expected an object, found 7"},
        {R"({"interfaces": [{"vendor": 1}]})", "interfaces[0].vendor: expected no other key than vendorId"},
        {R"({"interfaces": [{"vendorId": 65536}]})", "interfaces[0].vendorId: " + kNumber + "0 to 65535"},
        {R"({"interfaces": [{"productId": "1"}]})", "interfaces[0].productId: " + kNumber},
        {R"({"interfaces": [{"opens": 0}]})", "interfaces[0].opens: expected true or false, found 0"},
        {R"({"remote": "none"})", "remote: expected an object, or null for no remote, found \"none\""},
        {R"({"remote": {"sections": [1, "à"]}})",
         "remote.sections[1]: " + kNumber + "0 to 65535, found \"\\u00e0\""},
        {R"({"remote": {"version": 256}})", "remote.version: " + kNumber + "0 to 255, found 256"},
        {R"({"remote": {"free": null}})", "remote.free: " + kNumber + "0 to 255, found null"},
        {R"({"remote": {"arrivesAtPoll": 0}})", "remote.arrivesAtPoll: " + kNumber + "1 to"},
    });
}

TEST(BadScenario, WithAMemoryThatCantBe) {
    ExpectComplaints({
        {R"({"remote": {"memory": []}})", "remote.memory: expected an object"},
        {R"({"remote": {"memory": {"65536": []}}})", "remote.memory.65536: expected a decimal offset"},
        {R"({"remote": {"memory": {"-1": []}}})", "remote.memory.-1: expected a decimal offset"},
        {R"({"remote": {"memory": {"01": []}}})", "remote.memory.01: expected a decimal offset"},
        {R"({"remote": {"memory": {"": []}}})", "remote.memory.: expected a decimal offset"},
        {R"({"remote": {"memory": {"1": [0, 256]}}})", "remote.memory.1[1]: " + kNumber},
        {R"({"remote": {"memory": {"1": [[0, 1]]}}})", "remote.memory.1[0]: " + kNumber},
        {R"({"remote": {"memory": {"1": [1, 2], "2": [3]}}})", "remote.memory.2[0]: expected a word that no"},
        {R"({"remote": {"memory": {"0": [3], "65535": [1, 2]}}})", "remote.memory.65535[1]: expected a word"},
    });
}

TEST(BadScenario, WithAFaultThatCantBe) {
    ExpectComplaints({
        {R"({"faults": 1})", "faults: expected a list"},
        {WithFault(R"("cycle": 1)"),
         "faults[0].kind: expected one of unplugged, refused, writeFails, readFails, status, reply, flip, "
         "found "
         "nothing"},
        {WithFault(R"("cycle": 1, "kind": "late")"), "faults[0].kind: expected one of"},
        {WithFault(R"("kind": "refused")"), "faults[0].cycle: " + kNumber + "1 to 4294967295, found nothing"},
        {WithFault(R"("kind": "refused", "cycle": 0)"), "faults[0].cycle: " + kNumber},
        {WithFault(R"("kind": "refused", "cycle": 5, "through": 4)"),
         "faults[0].through: " + kNumber + "5 to"},
        {WithFault(R"("kind": "refused", "cycle": 1, "value": 1)"),
         "faults[0].value: expected no other key than cycle, through, kind, found 1"},
        {WithFault(R"("kind": "writeFails", "cycle": 1, "report": 0)"),
         "faults[0].report: " + kNumber + "1 to"},
        {WithFault(R"("kind": "status", "cycle": 1)"), "faults[0].value: " + kNumber},
        {WithFault(R"("kind": "reply", "cycle": 1)"), "faults[0].bytes: expected a list"},
        {WithFault(R"("kind": "reply", "cycle": 1, "bytes": [1, 300])"), "faults[0].bytes[1]: " + kNumber},
        {WithFault(R"("kind": "flip", "cycle": 1, "byte": 64, "mask": 1)"),
         "faults[0].byte: " + kNumber + "0 to 63"},
        {WithFault(R"("kind": "flip", "cycle": 1, "byte": 0)"), "faults[0].mask: " + kNumber},
        {WithFault(R"("kind": "unplugged", "cycle": 1, "when": "later")"),
         "faults[0].when: expected one of open, write, read, found \"later\""},
        {WithFault(R"("kind": "unplugged", "cycle": 1, "forMilliseconds": 3600001)"),
         "faults[0].forMilliseconds: " + kNumber},
    });
}

TEST(BadScenario, WithAListThatDoesNotEnd) {
    const auto listOf = [](std::size_t count) {
        std::string text = "[7";
        for (std::size_t i = 1; i < count; ++i)
            text += ",7";
        return text + "]";
    };
    const auto sections = [&](std::size_t count) {
        return R"({"remote": {"sections": )" + listOf(count) + "}}";
    };
    const auto memory = [&](std::size_t count) {
        return R"({"remote": {"memory": {"9": )" + listOf(count) + "}}}";
    };
    ExpectComplaints({
        {sections(255), "none"},
        {sections(256), "remote.sections: expected a list of 255 offsets at the most, found a list of 256"},
        {memory(65536), "none"},
        {memory(65537), "remote.memory.9: expected a list of 65536 words at the most, found a list of 65537"},
    });
}

TEST(ScenarioFile, FindsItsImageBesideIt) {
    const test::ScratchFolder folder;
    const std::string path = folder.Write("scenàrio.json", R"({"image": "image.json"})");
    EXPECT_EQ(LoadScenario(path).image, folder / "image.json");
}

TEST(ScenarioFile, ThatCantBeReadIsToldApartFromABadOne) {
    const test::ScratchFolder folder;
    EXPECT_THROW((void)LoadScenario(folder.Write("bad.json", "[]")), ScenarioError);
    EXPECT_THROW((void)LoadScenario(folder.Write("endless.json", std::string(5'000'000, ' '))),
                 ScenarioError);
    EXPECT_THROW((void)LoadScenario((folder / "missing.json").string()), platform::FileError);
    EXPECT_THROW((void)LoadScenario((folder / "").string()), platform::FileError);
}

}  // namespace
}  // namespace vento::simulator
