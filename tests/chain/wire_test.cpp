#include <gtest/gtest.h>

#include "chain/bench.h"

namespace vento::test {
namespace {

namespace fault = simulator::fault;

const std::string kFirstTiming = "19 84 15 2 2 8 4 168 38 75 188 135 0 165 0 14 1 74 1 ";

TEST(Programming, OneShortListByteForByte) {
    Workbench bench({}, Line(1, "TV", "9,9") + Line(1, "TV", "1,2,3"));
    bench.form.Command6_Click(0);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.host.Conversation(),
              kFirstTiming +
                  "| 7 85 1 0 1 6 2 | 7 85 1 0 1 4 2 | 7 85 1 0 1 5 7 | 7 85 1 0 1 7 1 | 7 85 1 0 1 24 2 "
                  "| 7 85 1 0 1 1 1 | 9 85 1 0 3 1 0 6 0 | 12 85 4 0 6 1 52 2 52 3 52 1 "
                  "| 7 85 1 0 1 2 1 | 10 85 1 0 4 1 0 0 2 1 | 7 85 1 0 1 7 1 | 7 85 1 0 1 144 2 "
                  "| 7 85 1 0 1 8 1 | 7 85 1 0 1 2 2 | 7 85 1 0 1 96 1 ");
    EXPECT_EQ(bench.host.frames.size(), 16U + 10);
    EXPECT_EQ(bench.Memory(), (WordRuns{{256, WordsOf(3, 1)}}));
}

TEST(Programming, ListsGoOutInBlocksOf32) {
    struct Case {
        std::size_t length;
        std::vector<std::size_t> frames;  // sizes of the data frames
        float bar;
    };
    for (const Case& c :
         {Case{1, {8}, 0}, Case{32, {70}, 31}, Case{33, {70, 8}, 31}, Case{64, {70, 70}, 62}}) {
        Workbench bench(With({}, {0x1234}), Programme(1, c.length));
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0) << c.length;
        std::vector<std::size_t> sizes;
        for (const Bytes& frame : bench.host.frames) {
            if (frame[1] == 85 && frame[2] == 4) sizes.push_back(frame.size());
        }
        EXPECT_EQ(sizes, c.frames) << c.length;
        EXPECT_EQ(bench.form.ProgressBar1.Value(), c.bar) << c.length;
    }
}

TEST(Programming, WritesTheSelectedSectionsOfTheRightList) {
    struct Case {
        const char* name;
        unsigned columns;
        std::uint8_t version;
        std::vector<std::uint16_t> sections;
        Bytes flagValues;
        unsigned listAdds;
    };
    const std::vector<Case> cases{
        {"build 2 takes list A", 7, 194, {256, 4352, 8448}, {24, 40, 72, 240}, 0},
        {"build 3 takes list B", 7, 3, {256, 4352, 8448}, {24, 40, 72, 240}, 100},
        {"build 15, sections in any order", 7, 0x1F, {40000, 0, 65496}, {24, 40, 72, 240}, 100},
        {"DTT alone", 2, 18, {256, 4352, 8448}, {40, 160}, 0},
        {"SAT selected, two sections", 5, 196, {256, 4352}, {24, 144}, 100},
        {"SAT alone, two sections", 4, 196, {256, 4352}, {128}, 100},
    };
    for (const Case& c : cases) {
        Workbench bench(With({}, c.sections, c.version), Programme(c.columns, 40));
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0) << c.name;
        Bytes flagValues;
        for (std::size_t i = 1; i < bench.host.frames.size(); ++i) {
            if (bench.host.frames[i - 1] == CommandFrame(7, 1)) flagValues.push_back(bench.host.frames[i][5]);
        }
        EXPECT_EQ(flagValues, c.flagValues) << c.name;
        WordRuns written;
        for (unsigned s = 0; s < c.sections.size(); ++s) {
            if ((c.columns & (1U << s)) != 0) written[c.sections[s]] = WordsOf(40, 10 * s + 1 + c.listAdds);
        }
        EXPECT_EQ(bench.Memory(), written) << c.name;
    }
}

// The simulated transmitter passes on nothing that has the LinkFactor of the other kind.
TEST(Programming, TheSecondKindOfTransmitterHasItsOwnTimingAndLinkFactor) {
    Scenario scenario;
    scenario.interfaces = {{0x046D, 1, true}, {1240, 1, false}, {11025, 9, true}};
    Workbench bench(scenario, Programme(7, 40));
    bench.form.Command6_Click(0);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.host.frames[0][5], 2);
}

TEST(ReadBack, ByteForByte) {
    Scenario scenario = With({}, {0x100, 0x200, 0x300});
    scenario.remote->contents.free = 32;
    for (const std::uint8_t byte : Bytes{0xC1, 0xC2, 0xC3, 0xA0, 0xFE, 0xFF, 0x9F, 0x41})
        scenario.remote->contents.memory[0x100].push_back({byte, 52});
    Workbench bench(scenario);
    bench.form.Command2_Click();
    EXPECT_EQ(bench.form.Label1.Caption(), "TV ABC ~   \r\nDTT \r\nSAT         \r\n");
    EXPECT_EQ(bench.host.Conversation(),
              kFirstTiming +
                  "| 7 85 1 0 1 6 2 | 7 85 1 0 1 8 1 | 7 85 1 0 1 5 2 | 7 85 1 0 1 0 1 | 7 85 1 0 1 4 2 "
                  "| 7 85 1 0 1 5 7 | 7 85 1 0 1 8 1 | 7 85 1 0 1 5 2 "
                  "| 7 85 1 0 1 8 1 | 7 85 1 0 1 1 1 | 9 85 1 0 3 1 0 8 8 "
                  "| 7 85 1 0 1 8 1 | 7 85 1 0 1 1 1 | 9 85 1 0 3 2 0 8 8 "
                  "| 7 85 1 0 1 8 1 | 7 85 1 0 1 1 1 | 9 85 1 0 3 3 0 8 8 | 7 85 1 0 1 0 1 ");
    EXPECT_EQ(bench.host.frames.size(), 19U + 20);
}

TEST(ReadBack, ShowsWhatThereIs) {
    struct Case {
        const char* name;
        std::uint8_t version;
        std::vector<std::uint16_t> sections;
        std::string text;
        std::vector<Fault> faults{};
    };
    const fault::Status refused{1};
    const std::string done = "Operation succesfully completed";
    for (const Case& c :
         {Case{"all free", 1, {1, 2, 3}, "TV \r\nDTT \r\nSAT \r\n"},
          Case{"two sections", 15, {1, 2}, "TV \r\nDTT \r\n"},
          Case{"a build that can't be read back", 0xF0, {1, 2, 3}, done},
          Case{"first release refused", 1, {1, 2, 3}, done, {{17, 17, refused}}},
          Case{"a section not read", 1, {1, 2, 3}, "TV \r\nSAT \r\n", {{35, 35, fault::WriteFails{}}}}}) {
        Workbench bench(With(c.faults, c.sections, c.version));
        bench.form.Command2_Click();
        EXPECT_EQ(bench.Code(), 0) << c.name;
        EXPECT_EQ(bench.form.Label1.Caption(), c.text) << c.name;
        EXPECT_EQ(bench.form.Text1.Text(), c.text == done ? "0" : c.text) << c.name;
    }
}

}  // namespace
}  // namespace vento::test
