#include "simulator/remote.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

struct Conversation {
    const char* behaviour;
    const char* script;
};

/// Plays each with a plain remote that holds a few words, two of them around the end of the memory.
void PlayAll(std::initializer_list<Conversation> conversations) {
    for (const Conversation& each : conversations) {
        SCOPED_TRACE(each.behaviour);
        Wire(R"({"remote": {"memory": {"256": [193, 194, 195], "65535": [1, 3]}}})").Play(each.script);
    }
}

TEST(Remote, KeepsToItsRules) {
    PlayAll({
        {"tells of itself", "165 = 0 165; 0 = 0 0; 4 = 0 4 3; 5 = 0 5 0 1 0 17 0 33; 6 = 0 6 196"},
        {"answers as much as is asked for",
         "5 /3 = 0 5 0 1; 6 /200 = 0 6 196; 6 /1 = 0 6; 6 /0; 6 = 0 6 196"},
        {"takes commands that want no reply", "1 /0; 1 0 2; 7 8 x4 = 0 233"},
        {"writes, verifies and reads a block",
         "1 = 0 1; 1 0 6; 1 52 2 52 3 52 x4 = 0 78; 2 = 0 2; 1 0 0 2 = 0 88;"
         "8 = 0 8; 1 = 0 1; 1 0 8 = 0 1 2 3 255 255 255 255 255"},
        {"leaves the second half of an odd block's last word",
         "1 = 0 1; 1 0 3; 9 9 9 x4 = 0 219;"
         "2 = 0 2; 1 0 0 1 = 0 173"},
        {"takes a block without words", "1 = 0 1; 1 0 0; x4 = 0 252; 165 = 0 165"},
        {"wraps at the end of the memory",
         "1 = 0 1; 255 255 4; 10 52 11 52 x4 = 0 122; 8 = 0 8; 1 = 0 1; 255 255 3 /8 = 0 10 11 255;"
         "2 = 0 2; 255 255 0 1 = 0 127"},
        {"verifies the whole memory, in which unwritten words add nothing", "2 = 0 2; 0 9 255 255 = 0 168"},
        {"keeps the free bits for a value without bit 7", "7 = 0 7; 24 = 0 24 0; 8 = 0 8; 5 = 0 5 112"},
        {"clears the free bits of written sections", "7 = 0 7; 223 = 0 223 0; 8 = 0 8; 5 = 0 5 32"},
        {"takes any byte for a flag value", "7 = 0 7; 165 = 0 165 0; 8 = 0 8; 5 = 0 5 80"},
        {"activates a section", "8 = 0 8; 2 = 0 2 112; 54 = 0 54; 165 = 0 165"},
        {"reads as many words as the frame says, without echo",
         "8 = 0 8; 1 = 0 1; 1 0 2 /8 = 0 193 194; 8 = 0 8; 1 = 0 1; 1 0 0 /8 = 0; 165 = 0 165"},
    });
}

TEST(Remote, RefusesWhatIsUnknownOrNotDueAndStartsAgain) {
    PlayAll({
        {"unknown commands", "3 = 1 0; 9 = 1 0 0; /1 = 1; 6 6 = 1 0 0; 165 = 0 165"},
        {"without a reply", "3; 1 /0; 9; 165 = 0 165"},
        {"unknown prefixed command", "8 = 0 8; 6 = 1 0 0; 6 = 0 6 196"},
        {"command for a header", "1 = 0 1; 165 = 1 0; 165 = 0 165"},
        {"command for a range", "2 = 0 2; 2 = 1 0; 2 = 0 2; 1 0 0 = 1 0; 165 = 0 165"},
        {"two bytes for a flag value", "7 = 0 7; 24 0 = 1 0 0; 24 = 1 0 0"},
        {"two bytes for an activation", "8 = 0 8; 2 = 0 2 112; 1 1 = 1 0; 1 = 0 1"},
        {"data of another size than announced, which are not stored",
         "1 = 0 1; 1 0 6; 1 52 2 52 x4 = 1 0; 1 52 2 52 3 52 x4 = 1 0; 2 = 0 2; 1 0 0 0 = 0 9"},
        {"data at the commands' LinkFactor", "1 = 0 1; 1 0 2; 1 52 x1 = 1 0; 1 52 x4 = 1 0; 165 = 0 165"},
        {"commands at the data's LinkFactor", "165 x4 = 1 0; 8 = 0 8; 5 x4 = 1 0 0; 5 /1 = 0 5"},
        {"other LinkFactors", "165 x0 = 1 0; 165 x2 = 1 0; 165 x257 = 1 0; 165 x1024 = 1 0; 165 = 0 165"},
    });
}

TEST(Remote, HearsTheSecondKindAtItsOwnLinkFactors) {
    Wire(R"({"interfaces": [{"vendorId": 11025}]})")
        .Play(
            "165 x1 = 1 0; 165 x2 = 0 165; 1 x2 = 0 1; 1 0 2 x2; 1 52 x4 = 1 0;"
            "165 x3 = 1 0; 1 x2 = 0 1; 1 0 2 x2; 1 52 x8 = 0 195");
}

TEST(Remote, ComesWithThePollThatItAnswers) {
    Wire(R"({"remote": {"arrivesAtPoll": 3}})")
        .Play("6 = 1 0 0; 165 = 1 0; 165 165 = 1 0; 165; 6 = 1 0 0; 165 = 0 165; 6 = 0 6 196");
}

TEST(Remote, ThatIsAbsentRefusesEverything) {
    Wire(R"({"remote": null})").Play("165 = 1 0; 0 /63 = 1; 1 /0");
}

TEST(Remote, TellsOfNoSectionsAndOfTooMany) {
    Wire(R"({"remote": {"sections": [], "free": 255}})").Play("4 = 0 4 0; 5 = 0 5; 8 = 0 8; 5 = 0 5 255");
    std::string sections;
    std::string reply = "5 /255 = 0 5";
    for (int i = 0; i < 255; ++i)
        sections += (i > 0 ? ",4660" : "4660");
    for (int i = 0; i < 31; ++i)
        reply += " 52 18";
    Wire(R"({"remote": {"sections": [)" + sections + "]}}").Play("4 = 0 4 255; " + reply);
}

TEST(Remote, LiesInFrontOfWhicheverTransmitterIsUsed) {
    Wire wire(R"({"interfaces": [{"opens": false}, {"vendorId": 11025}, {}]})");
    wire.Play("8 x2 = 0 8");
    wire.host.BeginSearch();
    while (wire.host.NextInterface()) {
        wire.device =
            wire.host.OpenInterface([](platform::HidIdentity each) { return each.vendorId == 1240; }).handle;
    }
    EXPECT_TRUE(wire.Write(Step("5 = 0 5 112").Frame()));
    EXPECT_EQ(wire.Read(), Padded({0, 5, 112}));
}

}  // namespace
}  // namespace vento::simulator
