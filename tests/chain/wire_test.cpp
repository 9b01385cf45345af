#include <gtest/gtest.h>

#include <tuple>

#include "chain/bench.h"

namespace vento::test {
namespace {

const std::string kFirstTiming = "19 84 15 2 2 8 4 168 38 75 188 135 0 165 0 14 1 74 1 ";

TEST(Programming, OneShortListByteForByte) {
    Workbench bench({}, Line(1, "TV", "9,9") + Line(1, "TV", "1,2,3"));
    bench.form.Command6_Click(0);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.host.Conversation(),
              kFirstTiming +
                  "| **7 85 1 0 1 6 2 <| 7 85 1 0 1 4 2 <| 7 85 1 0 1 5 7 <"
                  "| *7 85 1 0 1 7 1 <| 7 85 1 0 1 24 2 <"
                  "| 7 85 1 0 1 1 1 <| 9 85 1 0 3 1 0 6 0 | 12 85 4 0 6 1 52 2 52 3 52 1 <"
                  "| *7 85 1 0 1 2 1 <| 10 85 1 0 4 1 0 0 2 1 <| 7 85 1 0 1 7 1 <| 7 85 1 0 1 144 2 <"
                  "| 7 85 1 0 1 8 1 <| 7 85 1 0 1 2 2 <| 7 85 1 0 1 96 1 <");
    EXPECT_EQ(bench.host.frames.size(), 16U + 10);
    EXPECT_EQ(bench.Memory(), (WordRuns{{256, WordsOf(3, 1)}}));
    bench.form.Verify();
    EXPECT_EQ(bench.Code(), 0);
}

TEST(Programming, ListsGoOutInBlocksOf32) {
    for (const auto& [length, dataFrames, bar] : std::vector<std::tuple<std::size_t, std::string, float>>{
             {1, "8 ", 0}, {32, "70 ", 31}, {33, "70 8 ", 31}, {64, "70 70 ", 62}}) {
        Workbench bench(With({}, {0x1234}), Programme(1, length));
        bench.form.Command6_Click(0);
        std::string sizes;
        for (const Bytes& frame : bench.host.frames)
            sizes += frame[1] == 85 && frame[2] == 4 ? std::to_string(frame.size()) + " " : "";
        EXPECT_EQ(sizes, dataFrames) << length;
        EXPECT_EQ(bench.form.ProgressBar1.Value(), bar) << length;
        EXPECT_EQ(bench.Memory(), (WordRuns{{0x1234, WordsOf(length, 101)}}));
    }
}

// With either kind of transmitter: a simulated one passes on nothing that has the LinkFactor of the other
// kind.
TEST(Programming, WritesTheSelectedSectionsOfTheRightList) {
    using Sections = std::vector<std::uint16_t>;
    // Columns, version, sections, values of the flag frames, what list B adds, vendor of the transmitter.
    const std::vector<
        std::tuple<unsigned, std::uint8_t, std::string, Sections, Bytes, unsigned, std::uint16_t>>
        cases{
            {7, 194, "3.0.2", {256, 4352, 8448}, {24, 40, 72, 240}, 0, 1240},
            {7, 3, "0.0.3", {256, 4352, 8448}, {24, 40, 72, 240}, 100, 11025},
            {7, 0x6F, "1.2.15", {40000, 0, 65496}, {24, 40, 72, 240}, 100, 1240},  // sections in any order
            {2, 18, "0.1.2", {256, 4352, 8448}, {40, 160}, 0, 1240},               // DTT alone
            {5, 196, "3.0.4", {256, 4352}, {24, 144}, 100, 11025},  // SAT selected, two sections
            {4, 196, "3.0.4", {256, 4352}, {128}, 100, 1240},       // SAT alone, two sections
        };
    for (const auto& [columns, version, versionText, sections, flags, listAdds, vendorId] : cases) {
        SCOPED_TRACE("columns " + std::to_string(columns) + ", version " + versionText);
        Scenario scenario = With({}, sections, version);
        scenario.interfaces = {{0x046D, 1, true}, {1240, 1, false}, {vendorId, 9, true}};
        scenario.remote->contents.free = 0;
        Workbench bench(scenario, Programme(columns, 40));
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0);
        EXPECT_EQ(VersionText(*bench.form.LatestOutcome()->programming.version), versionText);
        Bytes values;
        for (std::size_t i = 1; i < bench.host.frames.size(); ++i) {
            const Bytes& before = bench.host.frames[i - 1];
            if (before[0] == 7 && before[5] == 7) values.push_back(bench.host.frames[i][5]);
        }
        EXPECT_EQ(values, flags);
        WordRuns written;
        for (unsigned s = 0; s < sections.size(); ++s) {
            if ((columns & (1U << s)) != 0) written[sections[s]] = WordsOf(40, 10 * s + 1 + listAdds);
        }
        EXPECT_EQ(bench.Memory(), written);
        bench.form.Verify();
        EXPECT_EQ(bench.Code(), columns >> sections.size() == 0 ? 0 : 18);
    }
}

TEST(Programming, TheActivationByteNamesTheFirstSectionInUse) {
    for (const auto& [state, expected] : std::vector<std::pair<int, int>>{
             {0x00, 0x00}, {0xE0, 0xE0}, {0x1F, 0x11}, {0xB0, 0xB2}, {0x70, 1}, {0xFF, 1}}) {
        EXPECT_EQ(ActivationByte(static_cast<std::uint8_t>(state)), expected) << state;
    }
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
                  "| **7 85 1 0 1 6 2 <| 7 85 1 0 1 8 1 <| 7 85 1 0 1 5 2 <| 7 85 1 0 1 0 1 <"
                  "| **7 85 1 0 1 4 2 <| 7 85 1 0 1 5 7 <| 7 85 1 0 1 8 1 <| 7 85 1 0 1 5 2 <"
                  "| 7 85 1 0 1 8 1 <| 7 85 1 0 1 1 1 <| 9 85 1 0 3 1 0 8 8 <"
                  "| 7 85 1 0 1 8 1 <| 7 85 1 0 1 1 1 <| 9 85 1 0 3 2 0 8 8 <"
                  "| 7 85 1 0 1 8 1 <| 7 85 1 0 1 1 1 <| 9 85 1 0 3 3 0 8 8 <| 7 85 1 0 1 0 1 <");
    EXPECT_EQ(bench.host.frames.size(), 19U + 20);
}

TEST(ReadBack, ShowsWhatThereIs) {
    const fault::Status refused{1};
    const std::string done = "Operation succesfully completed";
    const std::vector<std::tuple<std::uint8_t, std::vector<std::uint16_t>, std::vector<Fault>, std::string>>
        cases{
            {1, {1, 2, 3}, {}, "TV \r\nDTT \r\nSAT \r\n"},
            {15, {1, 2}, {}, "TV \r\nDTT \r\n"},
            {0xF0, {1, 2, 3}, {}, done},                          // can't be read back
            {1, {1, 2, 3}, {{17, 17, refused}}, done},            // first release refused
            {1, {1}, {{35, 35, fault::ReadFails{}}}, "TV \r\n"},  // last release lost, and zeros are right
            {1, {1, 2, 3}, {{35, 35, fault::WriteFails{}}}, "TV \r\nSAT \r\n"},  // a section not read
        };
    for (const auto& [version, sections, faults, text] : cases) {
        Workbench bench(With(faults, sections, version));
        bench.form.Command2_Click();
        EXPECT_EQ(bench.Code(), 0) << text;
        EXPECT_EQ(bench.form.Label1.Caption(), text);
        EXPECT_EQ(bench.form.Text1.Text(), text == done ? "0" : text);
    }
}

}  // namespace
}  // namespace vento::test
