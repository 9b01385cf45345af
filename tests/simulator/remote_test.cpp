#include "simulator/remote.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

struct Conversation {
    std::string name;
    std::vector<Step> steps;

    friend void PrintTo(const Conversation& each, std::ostream* out) { *out << each.name; }
};

/// The plain remote: version 196, sections at 256, 4352, 8448, all free, with TV's name written at 256 and
/// one word at the end of the memory.
Scenario WrittenRemote() {
    Scenario scenario;
    scenario.remote->contents.memory[256] = {{193, 52}, {194, 52}, {195, 52}};
    scenario.remote->contents.memory[65535] = {{1, 2}, {3, 4}};
    return scenario;
}

class RemoteConversation : public testing::TestWithParam<Conversation> {};

TEST_P(RemoteConversation, GoesLikeThis) {
    Wire wire(WrittenRemote());
    Play(wire, GetParam().steps);
}

const Step kPoll{{165}, 1, {0, 165}};
const Step kSayHeader{{1}, 1, {0, 1}};
const Step kSayVerify{{2}, 1, {0, 2}};
const Step kSayFlags{{7}, 1, {0, 7}};
const Step kSayPrefix{{8}, 1, {0, 8}};

INSTANTIATE_TEST_SUITE_P(
    Rules, RemoteConversation,
    testing::Values(
        Conversation{"TellsOfItself",
                     {kPoll,
                      {{0}, 1, {0, 0}},
                      {{4}, 2, {0, 4, 3}},
                      {{5}, 7, {0, 5, 0, 1, 0, 17, 0, 33}},
                      {{6}, 2, {0, 6, 196}}}},
        Conversation{"CutsAndFillsToTheReplyCount",
                     {{{5}, 3, {0, 5, 0, 1}}, {{6}, 200, {0, 6, 196}}, {{6}, 1, {0, 6}}}},
        Conversation{"AnswersNothingWhereNothingIsAskedFor",
                     {{{1}, 0, {}}, {{1, 0, 2}, 0, {}}, {{7, 8}, 1, {0, 233}, 4}}},
        // The two block examples of a list 1, 2, 3 at offset 256.
        Conversation{"WritesAndVerifiesABlock",
                     {kSayHeader,
                      {{1, 0, 6}, 0, {}},
                      {{1, 52, 2, 52, 3, 52}, 1, {0, 78}, 4},
                      kSayVerify,
                      {{1, 0, 0, 2}, 1, {0, 88}},
                      kSayPrefix,
                      {{1}, 1, {0, 1}},
                      {{1, 0, 8}, 8, {0, 1, 2, 3, 255, 255, 255, 255, 255}}}},
        Conversation{"KeepsTheSecondHalfOfAWordThatAnOddBlockLeavesOut",
                     {kSayHeader,
                      {{1, 0, 3}, 0, {}},
                      {{9, 9, 9}, 1, {0, static_cast<std::uint8_t>(254 + 255 + 252 + 3 * 246)}, 4},
                      kSayVerify,
                      {{1, 0, 0, 1}, 1, {0, static_cast<std::uint8_t>(3 * 246 + 203)}}}},
        Conversation{"WrapsAtTheEndOfTheMemory",
                     {kSayHeader,
                      {{255, 255, 4}, 0, {}},
                      {{10, 52, 11, 52}, 1, {0, static_cast<std::uint8_t>(251 + 245 + 244 + 2 * 203)}, 4},
                      kSayPrefix,
                      {{1}, 1, {0, 1}},
                      {{255, 255, 3}, 8, {0, 10, 11, 255}},
                      kSayVerify,
                      {{255, 255, 0, 1}, 1, {0, static_cast<std::uint8_t>(245 + 244 + 2 * 203)}}}},
        // Unwritten words add nothing, so the sum over all 65,536 is that over the five written ones.
        Conversation{"VerifiesTheWholeMemory",
                     {kSayVerify,
                      {{0, 9, 255, 255},
                       1,
                       {0, static_cast<std::uint8_t>(62 + 61 + 60 + 3 * 203 + 254 + 253 + 252 + 251)}}}},
        Conversation{"ClearsTheFreeBitsOfWrittenSections",
                     {kSayFlags,
                      {{24}, 2, {0, 24}},  // without bit 7 nothing is cleared
                      kSayPrefix,
                      {{5}, 2, {0, 5, 112}},
                      kSayFlags,
                      {{128 + 16 + 64 + 15}, 2, {0, 223}},
                      kSayPrefix,
                      {{5}, 2, {0, 5, 32}}}},
        Conversation{"TakesAnyByteAsAFlagValue",  // even one that is a command elsewhere
                     {kSayFlags, {{165}, 2, {0, 165}}, kSayPrefix, {{5}, 2, {0, 5, 80}}}},
        Conversation{"ActivatesASection", {kSayPrefix, {{2}, 2, {0, 2, 112}}, {{0x36}, 1, {0, 0x36}}, kPoll}},
        Conversation{"ReadsFirstBytesWithoutAnEcho",
                     {kSayPrefix,
                      {{1}, 1, {0, 1}},
                      {{1, 0, 2}, 8, {0, 193, 194}},  // as many words as the frame says, not as replies
                      kSayPrefix,
                      {{1}, 1, {0, 1}},
                      {{1, 0, 0}, 8, {0}},
                      kPoll}}),
    [](const auto& each) { return each.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Refusals, RemoteConversation,
    testing::Values(
        Conversation{"UnknownCommands",
                     {{{3}, 1, {1}}, {{9}, 2, {1}}, {{}, 1, {1}}, {{6, 6}, 2, {1}}, kPoll}},
        Conversation{"UnknownPrefixedCommands", {kSayPrefix, {{6}, 2, {1}}, {{6}, 2, {0, 6, 196}}}},
        Conversation{"CommandWhereAHeaderIsDue", {kSayHeader, {{165}, 1, {1}}, kPoll}},
        Conversation{"CommandWhereARangeIsDue", {kSayVerify, {{2}, 1, {1}}, kSayVerify, {{1, 0, 0}, 1, {1}}}},
        Conversation{"TwoBytesWhereAFlagIsDue", {kSayFlags, {{24, 0}, 2, {1}}, {{24}, 2, {1}}}},
        Conversation{"TwoBytesWhereAnActivationIsDue",
                     {kSayPrefix, {{2}, 2, {0, 2, 112}}, {{1, 1}, 1, {1}}, {{1}, 1, {0, 1}}}},
        Conversation{"DataOfAnotherSizeThanAnnounced",
                     {kSayHeader,
                      {{1, 0, 6}, 0, {}},
                      {{1, 52, 2, 52}, 1, {1}, 4},
                      {{1, 52, 2, 52, 3, 52}, 1, {1}, 4},
                      kSayVerify,  // and nothing was written
                      {{1, 0, 0, 0}, 1, {0, static_cast<std::uint8_t>(62 + 203)}}}},
        Conversation{"DataAtTheCommandsPace",
                     {kSayHeader, {{1, 0, 2}, 0, {}}, {{1, 52}, 1, {1}, 1}, {{1, 52}, 1, {1}, 4}, kPoll}},
        Conversation{"CommandsAtTheDatasPace",
                     {{{165}, 1, {1}, 4}, kSayPrefix, {{5}, 2, {1}, 4}, {{5}, 1, {0, 5}}}},
        Conversation{"OtherPaces", {{{165}, 1, {1}, 0}, {{165}, 1, {1}, 2}, {{165}, 1, {1}, 257}, kPoll}},
        Conversation{"RefusedFramesWithoutAReply", {{{3}, 0, {}}, {{1}, 0, {}}, {{9}, 0, {}}, kPoll}}),
    [](const auto& each) { return each.param.name; });

TEST(Remote, HearsTheSecondKindAtItsOwnFactors) {
    Scenario scenario;
    scenario.interfaces = {{.vendorId = 11025}};
    Wire wire(scenario);
    Play(wire, {{{165}, 1, {1}, 1},
                {{165}, 1, {0, 165}, 2},
                {{1}, 1, {0, 1}, 2},
                {{1, 0, 2}, 0, {}, 2},
                {{1, 52}, 1, {1}, 4},
                {{1}, 1, {0, 1}, 2},
                {{1, 0, 2}, 0, {}, 2},
                {{1, 52}, 1, {0, static_cast<std::uint8_t>(254 + 255 + 253 + 254 + 203)}, 8}});
}

TEST(Remote, ComesWithThePollThatItAnswers) {
    Scenario scenario;
    scenario.remote->arrivesAtPoll = 3;
    Wire wire(scenario);
    Play(wire, {{{6}, 2, {1}},
                {{165}, 1, {1}},
                {{165, 165}, 1, {1}},
                {{165}, 0, {}},
                {{6}, 2, {1}},
                kPoll,
                {{6}, 2, {0, 6, 196}}});
}

TEST(Remote, ThatIsAbsentRefusesEverything) {
    Scenario scenario;
    scenario.remote.reset();
    Wire wire(scenario);
    Play(wire, {{{165}, 1, {1}}, {{0}, 63, {1}}, {{1}, 0, {}}});
}

TEST(Remote, SaysSectionsAndFreeBitsAsTheyAre) {
    Scenario scenario;
    scenario.remote->sections = std::vector<std::uint16_t>(255, 0x1234);
    scenario.remote->contents.free = 0xFF;
    Wire wire(scenario);
    Bytes table = {0, 5};
    while (table.size() < 64)
        table.insert(table.end(), {0x34, 0x12});
    Play(wire, {{{4}, 2, {0, 4, 255}}, {{5}, 255, table}, kSayPrefix, {{5}, 2, {0, 5, 255}}});
    scenario.remote->sections.clear();
    Wire bare(scenario);
    Play(bare, {{{4}, 2, {0, 4, 0}}, {{5}, 1, {0, 5}}});
}

TEST(Remote, LiesInFrontOfWhicheverTransmitterIsUsed) {
    Scenario scenario;
    scenario.interfaces = {{.vendorId = 11025}, {.vendorId = 1240}};
    scenario.faults = {{.cycle = 2, .through = 2, .kind = fault::Refused{}}};
    Wire wire(scenario);
    Play(wire, {{{8}, 1, {0, 8}, 2}});
    EXPECT_FALSE(wire.Open());
    Play(wire, {{{5}, 2, {0, 5, 112}, 2}});
}

}  // namespace
}  // namespace vento::simulator
