#include <gtest/gtest.h>

#include "chain/bench.h"

namespace vento {
namespace {

using simulator::Fault;
using simulator::FaultKind;
using simulator::Scenario;
using test::Bytes;
using test::Line;
using test::ListOf;
using test::Workbench;
namespace fault = simulator::fault;

// Cycles of a run with the remote in place: 1 handler's search, 2 operation's search, 3 timing, 4 to 13
// polls.
constexpr std::uint32_t kFirstPoll = 4;
constexpr std::uint32_t kAfterWait = 14;

std::string ThreeColumns(std::size_t length = 33) {
    std::string text;
    for (int c = 1; c <= 3; ++c) {
        text += Line(c, "L", ListOf(length, 7)) + Line(c, "L", ListOf(length, static_cast<unsigned>(60 * c)));
    }
    return text;
}

Scenario With(std::vector<Fault> faults) {
    Scenario scenario;
    scenario.faults = std::move(faults);
    return scenario;
}

struct Case {
    const char* name;
    std::vector<Fault> faults;
    int code;
    const char* message;   // in Italian; as much of it as begins it
    Bytes lastFlags = {};  // value of the last flag frame, where it matters
};

void Expect(const Case& c, Workbench& bench) {
    EXPECT_EQ(bench.Code(), c.code) << c.name;
    EXPECT_TRUE(bench.form.Label1.Caption().starts_with(c.message)) << c.name << bench.form.Label1.Caption();
    EXPECT_EQ(bench.form.Text1.Text(), std::to_string(c.code)) << c.name;
    EXPECT_FALSE(bench.form.ProgressBar1.Visible()) << c.name;
    EXPECT_TRUE(bench.form.Command6(0).Enabled()) << c.name;
    EXPECT_EQ(bench.host.openHandles, 0) << c.name;
    if (c.code != 0) {
        EXPECT_FALSE(bench.form.LatestOutcome()->diagnostic.empty()) << c.name;
    }
}

TEST(ProgrammingFailure, EachStepHasItsCode) {
    const fault::Status refused{1};
    const fault::ReadFails lost{};
    // One block a section of 33 bytes has two: per section 2 flag frames, 2 times 3 block frames, 2 verify
    // frames.
    constexpr std::uint32_t kSection = kAfterWait + 3;
    constexpr std::uint32_t kPerSection = 10;
    constexpr std::uint32_t kClosing = kSection + 3 * kPerSection;
    constexpr std::uint32_t kActivate = kClosing + 2;
    constexpr std::uint32_t kSecondRoad = kActivate + 3 + 10;  // after a failure of its third frame
    const std::vector<Case> cases{
        {"gone at the second look", {{2, 2, fault::Unplugged{}}}, 2, "Programmatore non collegato"},
        {"gone before the timing", {{3, 3, fault::Unplugged{}}}, 9, "Errore 10"},
        {"timing lost on the way", {{3, 3, fault::WriteFails{}}}, 0, "Programmazione eseguita"},
        {"gone during the wait", {{kFirstPoll, 30000, fault::Unplugged{}}}, 3, "Telecomando non rilevato"},
        {"version refused", {{kAfterWait, kAfterWait, refused}}, 12, "Errore 13"},
        {"version lost", {{kAfterWait, kAfterWait, lost}}, 12, "Errore 13"},
        {"count refused", {{kAfterWait + 1, kAfterWait + 1, refused}}, 6, "Errore 7"},
        {"table lost", {{kAfterWait + 2, kAfterWait + 2, lost}}, 5, "Errore 6"},
        {"one announcement refused, section written all the same",
         {{kSection + 1, kSection + 1, refused}},
         0,
         "Progr",
         {240}},
        {"one transfer refused",
         {{kSection + 2, kSection + 2, refused}},
         0,
         "Programmazione eseguita",
         {224}},
        {"a block's checksum wrong", {{kSection + 4, kSection + 4, fault::Flip{1, 64}}}, 0, "Progr", {224}},
        {"the last announcement and its transfer refused",
         {{kSection + 2 * kPerSection, kSection + 2 * kPerSection + 1, refused}},
         3,
         "Telecomando non rilevato"},
        {"verification not opened", {{kSection + 8, kSection + 8, refused}}, 18, "Errore 19"},
        {"verification's checksum wrong", {{kSection + 9, kSection + 9, fault::Flip{1, 1}}}, 18, "Errore 19"},
        {"closing flags lost", {{kClosing, kClosing, lost}}, 0, "Programmazione eseguita"},
        {"first activation refused, second good",
         {{kActivate + 2, kActivate + 2, refused}},
         0,
         "Programmazione"},
        {"activation refused twice",
         {{kActivate + 2, kActivate + 2, refused}, {kSecondRoad, kSecondRoad, lost}},
         19,
         "Errore 20"},
        {"not released after the second activation",
         {{kActivate + 2, kActivate + 2, refused}, {kSecondRoad + 3, kSecondRoad + 3, refused}},
         11,
         "Errore 12"},
    };
    for (const Case& c : cases) {
        Workbench bench(With(c.faults), ThreeColumns());
        bench.form.Language = "ITA";
        bench.form.Command6_Click(0);
        Expect(c, bench);
        if (!c.lastFlags.empty()) {
            EXPECT_TRUE(std::ranges::count(bench.host.frames, Bytes{7, 85, 1, 0, 1, c.lastFlags[0], 2}))
                << c.name;
        }
    }
}

TEST(ProgrammingFailure, AllTransfersCanFailAndTheRunStillEndsWell) {
    std::vector<Fault> faults;
    for (std::uint32_t section = 0; section < 3; ++section) {
        const std::uint32_t firstBlock = kAfterWait + 7 + 5 * section;
        faults.push_back({firstBlock, firstBlock, fault::Flip{1, 1}});
    }
    Workbench bench(With(faults), ThreeColumns());
    bench.form.Command6_Click(0);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(std::ranges::count(bench.host.frames, Bytes{7, 85, 1, 0, 1, 128, 2}), 1);
    EXPECT_NE(bench.form.LatestOutcome()->diagnostic.find("left out"), std::string::npos);
}

TEST(ProgrammingFailure, DataThatCannotBeWorkedWithStopsItBeforeAnyHarm) {
    struct DataCase {
        const char* name;
        std::string programme;
        std::vector<std::uint16_t> sections;
        int code;
        std::size_t conversation;  // frames besides the polls
    };
    const std::string tooLong = Line(1, "L", "1") + Line(1, "L", ListOf(16384, 0)) + Line(2, "L", "1") +
                                Line(2, "L", ListOf(16384, 0));
    const std::vector<DataCase> cases{
        {"no label", Line(1, " ", "1") + Line(1, " ", "1"), {1}, 10, 2},
        {"no list B", Line(1, "L", "1"), {1}, 10, 2},
        {"bad piece in list B", Line(1, "L", "1") + Line(1, "L", "1,,2"), {1}, 15, 1},
        {"bad piece in the list that is not wanted", Line(1, "L", "256") + Line(1, "L", "1"), {1}, 15, 1},
        {"bad piece where no label selects it",
         Line(1, "", "x") + Line(1, "", "x") + Line(2, "L", "1") + Line(2, "L", "1"),
         {1, 2},
         0,
         16},
        {"one column without its list",
         Line(2, "L", "1") + Line(2, "L", "1") + Line(1, "L", "1"),
         {1, 2},
         15,
         2},
        {"too many bytes", tooLong, {1, 20000}, 15, 2},
        {"no sections", ThreeColumns(), {}, 15, 3},
        {"four sections", ThreeColumns(), {1, 2, 3, 4}, 15, 3},
        {"a section at the end of the memory", ThreeColumns(33), {0, 100, 65503}, 0, 0},
        {"a section beyond the end of the memory", ThreeColumns(33), {0, 100, 65504}, 15, 4},
    };
    for (const DataCase& c : cases) {
        Scenario scenario;
        scenario.remote->sections = c.sections;
        Workbench bench(scenario, c.programme);
        bench.form.Command6_Click(0);
        Expect({c.name, {}, c.code, ""}, bench);
        if (c.conversation != 0) {
            EXPECT_EQ(bench.host.Conversation().size(), c.conversation) << c.name;
        }
        if (c.code == 15 && c.conversation == 1) {
            EXPECT_EQ(bench.host.frames.size(), 1U) << c.name << ": the remote was contacted";
        }
    }
}

TEST(ProgrammingFailure, ALostReplyIsNoChecksumOfZero) {
    // A list whose checksums come to 0: zeros from a missing transmitter must not pass for it.
    Scenario scenario;
    scenario.remote->sections = {0};
    // header 0, 0, 2: 255 + 255 + 253; data x, 52: 255 - x + 203. Both sums are 0 modulo 256 for no single x,
    // so one block with the checksum 0 and one section with the checksum 0 are tried apart.
    for (const auto& [list, cycle] : std::vector<std::pair<int, std::uint32_t>>{{197, 20}, {202, 22}}) {
        Workbench bench(scenario, Line(1, "L", "1") + Line(1, "L", std::to_string(list)));
        scenario.faults = {{cycle, cycle, fault::Unplugged{}}};
        Workbench faulty(scenario, Line(1, "L", "1") + Line(1, "L", std::to_string(list)));
        scenario.faults.clear();
        bench.form.Command6_Click(0);
        faulty.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0);
        const bool blockLost = cycle == 20;
        EXPECT_EQ(faulty.Code(), blockLost ? 0 : 18);
        const Bytes closing{7, 85, 1, 0, 1, 128, 2};
        EXPECT_EQ(std::ranges::count(faulty.host.frames, closing), blockLost ? 1 : 0);
    }
}

TEST(ReadFailure, EachStepHasItsCode) {
    const fault::Status refused{1};
    constexpr std::uint32_t kCodes = kAfterWait + 4 + 10;  // second conversation, after its polls
    const std::vector<Case> cases{
        {"version", {{14, 14, refused}}, 12, "Errore 13"},
        {"flags", {{16, 16, refused}}, 21, "Errore 22"},
        {"not seen a second time", {{18, 40000, refused}}, 3, "Telecomando"},
        {"count", {{kCodes, kCodes, refused}}, 6, "Errore 7"},
        {"table", {{kCodes + 1, kCodes + 1, refused}}, 5, "Errore 6"},
        {"flags again", {{kCodes + 2, kCodes + 2, refused}}, 21, "Errore 22"},
        {"release", {{kCodes + 13, kCodes + 13, refused}}, 11, "Errore 12"},
    };
    for (const Case& c : cases) {
        Workbench bench(With(c.faults));
        bench.form.Language = "ITA";
        bench.form.Command2_Click();
        Expect(c, bench);
    }
    Scenario manySections;
    manySections.remote->sections = {1, 2, 3, 4};
    Workbench bench(manySections);
    bench.form.Command2_Click();
    Expect({"four sections", {}, 15, "Attention an error occurred! Repeat programming"}, bench);

    Workbench unreleased(With({{17, 17, refused}}));  // the first release: no version, no text, no failure
    unreleased.form.Command2_Click();
    EXPECT_EQ(unreleased.form.Label1.Caption(), "Operation succesfully completed");

    Workbench noBlock(With({{kCodes + 7, kCodes + 7, fault::WriteFails{}}}));  // the second section's prefix
    noBlock.form.Command2_Click();
    EXPECT_EQ(noBlock.form.Label1.Caption(), "TV \r\nSAT \r\n");
}

// Every kind of fault in every cycle of a run of three columns.
TEST(FaultSweep, NothingHangsAndTheNextRunIsGood) {
    const std::string programme = ThreeColumns();
    Workbench plain({}, programme);
    plain.form.Command6_Click(0);
    const auto cycles = static_cast<std::uint32_t>(plain.host.cycles);
    const std::vector<FaultKind> kinds{fault::Unplugged{},   fault::Refused{},     fault::WriteFails{1},
                                       fault::WriteFails{2}, fault::ReadFails{},   fault::Status{1},
                                       fault::Reply{},       fault::Flip{1, 0x80}, fault::Flip{0, 1},
                                       fault::Flip{2, 0xFF}};
    const std::vector<int> allowed{0, 2, 3, 5, 6, 9, 10, 11, 12, 15, 18, 19};
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        for (std::uint32_t cycle = 1; cycle <= cycles; ++cycle) {
            const std::string name = "fault " + std::to_string(kind) + " in cycle " + std::to_string(cycle);
            Workbench bench(With({{cycle, cycle, kinds[kind]}}), programme);
            bench.form.Command6_Click(0);
            const bool box = !bench.desktop.messages.empty();
            EXPECT_EQ(box, bench.Code() == -1) << name;
            if (!box) {
                EXPECT_TRUE(std::ranges::count(allowed, bench.Code())) << name << ": " << bench.Code();
            }
            EXPECT_FALSE(bench.form.ProgressBar1.Visible()) << name;
            EXPECT_TRUE(bench.form.Command6(0).Enabled()) << name;
            EXPECT_FALSE(bench.form.Command6(3).Enabled()) << name;
            EXPECT_EQ(bench.host.openHandles, 0) << name;
            bench.form.Command6_Click(0);
            EXPECT_EQ(bench.Code(), 0) << name;
            EXPECT_EQ(bench.Stored(256, 33), plain.Stored(256, 33)) << name;
            EXPECT_EQ(bench.Stored(8448, 33), plain.Stored(8448, 33)) << name;
        }
    }
}

}  // namespace
}  // namespace vento
