#include <gtest/gtest.h>

#include "chain/bench.h"

namespace vento {
namespace {

using simulator::Scenario;
using test::Bytes;
using test::Line;
using test::ListOf;
using test::Workbench;

const Bytes kFirstTiming{19, 84, 15, 2, 2, 8, 4, 168, 38, 75, 188, 135, 0, 165, 0, 14, 1, 74, 1};

Scenario WithSections(std::vector<std::uint16_t> sections, std::uint8_t version = 196) {
    Scenario scenario;
    scenario.remote->sections = std::move(sections);
    scenario.remote->version = version;
    return scenario;
}

// Both lists of every column of this mask (1 TV, 2 DTT, 4 SAT), list B beginning 100 above list A.
std::string Programme(unsigned columns, std::size_t length) {
    std::string text;
    for (int c = 0; c < 3; ++c) {
        if ((columns & (1U << c)) == 0) continue;
        const auto first = static_cast<unsigned>(10 * c + 1);
        text += Line(c + 1, "L", ListOf(length, first)) + Line(c + 1, "L", ListOf(length, first + 100));
    }
    return text;
}

TEST(Programming, OneShortListByteForByte) {
    Workbench bench({}, Line(1, "TV", "9,9") + Line(1, "TV", "1,2,3"));
    bench.form.Command6_Click(0);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.host.Conversation(), (std::vector<Bytes>{kFirstTiming,
                                                             {7, 85, 1, 0, 1, 6, 2},
                                                             {7, 85, 1, 0, 1, 4, 2},
                                                             {7, 85, 1, 0, 1, 5, 7},
                                                             {7, 85, 1, 0, 1, 7, 1},
                                                             {7, 85, 1, 0, 1, 24, 2},
                                                             {7, 85, 1, 0, 1, 1, 1},
                                                             {9, 85, 1, 0, 3, 1, 0, 6, 0},
                                                             {12, 85, 4, 0, 6, 1, 52, 2, 52, 3, 52, 1},
                                                             {7, 85, 1, 0, 1, 2, 1},
                                                             {10, 85, 1, 0, 4, 1, 0, 0, 2, 1},
                                                             {7, 85, 1, 0, 1, 7, 1},
                                                             {7, 85, 1, 0, 1, 144, 2},
                                                             {7, 85, 1, 0, 1, 8, 1},
                                                             {7, 85, 1, 0, 1, 2, 2},
                                                             {7, 85, 1, 0, 1, 96, 1}}));
    EXPECT_EQ(bench.host.frames.size(), 16U + 10);
    EXPECT_EQ(bench.host.openHandles, 0);
    EXPECT_EQ(bench.Stored(256, 4), (Bytes{1, 2, 3, 255}));
    EXPECT_EQ(bench.form.ProgressBar1.Value(), 2);
    EXPECT_EQ(bench.form.ProgressBar1.Maximum(), 3);
}

TEST(Programming, ListsGoOutInBlocksOf32) {
    struct Case {
        std::size_t length;
        std::vector<std::size_t> frames;  // sizes of the data frames
        float bar;
    };
    for (const Case& c :
         {Case{1, {8}, 0}, Case{32, {70}, 31}, Case{33, {70, 8}, 31}, Case{64, {70, 70}, 62}}) {
        Workbench bench(WithSections({0x1234}), Programme(1, c.length));
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0) << c.length;
        std::vector<std::size_t> sizes;
        std::vector<unsigned> offsets;
        for (const Bytes& frame : bench.host.frames) {
            if (frame[1] == 85 && frame[2] == 4) sizes.push_back(frame.size());
            if (frame.size() == 9) offsets.push_back(256U * frame[5] + frame[6]);
        }
        EXPECT_EQ(sizes, c.frames) << c.length;
        for (std::size_t i = 0; i < offsets.size(); ++i)
            EXPECT_EQ(offsets[i], 0x1234 + 32 * i);
        EXPECT_EQ(bench.form.ProgressBar1.Value(), c.bar) << c.length;
        EXPECT_EQ(bench.Stored(0x1234, 2)[0], 101) << c.length;
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
        {"all, list B", 7, 196, {256, 4352, 8448}, {24, 40, 72, 240}, 100},
        {"build 2 takes list A", 7, 194, {256, 4352, 8448}, {24, 40, 72, 240}, 0},
        {"build 3 takes list B", 7, 3, {256, 4352, 8448}, {24, 40, 72, 240}, 100},
        {"build 15, sections in any order", 7, 0x1F, {40000, 0, 65496}, {24, 40, 72, 240}, 100},
        {"DTT alone", 2, 18, {256, 4352, 8448}, {40, 160}, 0},
        {"SAT selected, two sections", 5, 196, {256, 4352}, {24, 144}, 100},
        {"SAT alone, two sections", 4, 196, {256, 4352}, {128}, 100},
    };
    for (const Case& c : cases) {
        Workbench bench(WithSections(c.sections, c.version), Programme(c.columns, 40));
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0) << c.name;
        Bytes flagValues;
        for (std::size_t i = 1; i < bench.host.frames.size(); ++i) {
            if (bench.host.frames[i - 1] == Bytes{7, 85, 1, 0, 1, 7, 1})
                flagValues.push_back(bench.host.frames[i][5]);
        }
        EXPECT_EQ(flagValues, c.flagValues) << c.name;
        for (std::size_t s = 0; s < c.sections.size(); ++s) {
            const bool selected = (c.columns & (1U << s)) != 0;
            Bytes expected(40, 255);
            for (unsigned i = 0; i < 40 && selected; ++i) {
                expected[i] = static_cast<std::uint8_t>(10 * s + 1 + c.listAdds + i);
            }
            EXPECT_EQ(bench.Stored(c.sections[s], 40), expected) << c.name << ", section " << s;
        }
    }
}

TEST(Programming, TheSecondKindOfTransmitterHasItsOwnTimingAndLinkFactor) {
    Scenario scenario;
    scenario.interfaces = {{0x046D, 1, true}, {1240, 1, false}, {11025, 9, true}};
    Workbench bench(scenario, Programme(7, 40));
    bench.form.Command6_Click(0);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.host.frames[0][5], 2);
    for (std::size_t i = 1; i < bench.host.frames.size(); ++i) {
        const Bytes& frame = bench.host.frames[i];
        const bool isData = frame[4] > 4;
        EXPECT_EQ(frame[2], isData ? 8 : 2) << i;
        EXPECT_EQ(frame[3], 0) << i;
    }
}

TEST(ReadBack, ByteForByte) {
    Scenario scenario = WithSections({0x100, 0x200, 0x300});
    scenario.remote->contents.free = 32;
    const Bytes tv{0xC1, 0xC2, 0xC3, 0xA0, 0xFE, 0xFF, 0x9F, 0x41};
    for (const std::uint8_t byte : tv)
        scenario.remote->contents.memory[0x100].push_back({byte, 52});
    Workbench bench(scenario);
    bench.form.Command2_Click();
    EXPECT_EQ(bench.form.Label1.Caption(), "TV ABC ~   \r\nDTT \r\nSAT         \r\n");
    EXPECT_EQ(bench.form.Text1.Text(), bench.form.Label1.Caption());
    std::vector<Bytes> expected{kFirstTiming,           {7, 85, 1, 0, 1, 6, 2}, {7, 85, 1, 0, 1, 8, 1},
                                {7, 85, 1, 0, 1, 5, 2}, {7, 85, 1, 0, 1, 0, 1}, {7, 85, 1, 0, 1, 4, 2},
                                {7, 85, 1, 0, 1, 5, 7}, {7, 85, 1, 0, 1, 8, 1}, {7, 85, 1, 0, 1, 5, 2}};
    for (const std::uint8_t high : Bytes{1, 2, 3}) {
        expected.push_back({7, 85, 1, 0, 1, 8, 1});
        expected.push_back({7, 85, 1, 0, 1, 1, 1});
        expected.push_back({9, 85, 1, 0, 3, high, 0, 8, 8});
    }
    expected.push_back({7, 85, 1, 0, 1, 0, 1});
    EXPECT_EQ(bench.host.Conversation(), expected);
    EXPECT_EQ(bench.host.frames.size(), expected.size() + 20);
    EXPECT_FALSE(bench.form.ProgressBar1.Visible());
}

TEST(ReadBack, ShowsWhatThereIs) {
    struct Case {
        const char* name;
        std::uint8_t version;
        std::uint8_t free;
        std::vector<std::uint16_t> sections;
        std::string text;
    };
    const std::string success = "Operation succesfully completed";
    for (const Case& c : {Case{"all free", 1, 0x70, {1, 2, 3}, "TV \r\nDTT \r\nSAT \r\n"},
                          Case{"two sections", 15, 0x70, {1, 2}, "TV \r\nDTT \r\n"},
                          Case{"a build that can't be read back", 0xF0, 0x70, {1, 2, 3}, success}}) {
        Scenario scenario = WithSections(c.sections, c.version);
        scenario.remote->contents.free = c.free;
        Workbench bench(scenario);
        bench.form.Command2_Click();
        EXPECT_EQ(bench.Code(), 0) << c.name;
        EXPECT_EQ(bench.form.Label1.Caption(), c.text) << c.name;
        EXPECT_EQ(bench.form.Text1.Text(), c.text == success ? "0" : c.text) << c.name;
    }
}

}  // namespace
}  // namespace vento
