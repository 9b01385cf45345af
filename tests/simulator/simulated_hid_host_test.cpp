#include "simulator/simulated_hid_host.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

const Bytes kPoll = RemoteFrame({165}, 1);

TEST(Transmitter, AnswersOneGoodFrameForTheRemoteAtATime) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    const Transmitter::TimingFrame timing{19, 'T', 15};
    // Of no length or type, without a count of reply bytes, not as long as send bytes or type say; and those
    // for the transmitter itself.
    for (const Bytes& frame :
         {Bytes{0}, Bytes{7, 'V', 1, 0, 1, 165, 1}, Bytes{5, 'U', 1, 0, 0}, Bytes{7, 'U', 1, 0, 2, 165, 1},
          Bytes{8, 'U', 1, 0, 1, 165, 1, 1}, Bytes{3, 'R'}, Bytes{2, 'R'}, Bytes{1, 'Q'},
          Bytes(timing.begin(), timing.end())}) {
        EXPECT_EQ(wire.Exchange(frame), std::nullopt) << testing::PrintToString(frame);
    }
    const Transmitter& transmitter = *wire.host.TransmitterAt(0);
    EXPECT_EQ(transmitter.LastTimingFrame(), timing);
    EXPECT_EQ(transmitter.LastFrameR(), (Transmitter::ShortFrame{2, 'R'}));
    EXPECT_EQ(transmitter.LastFrameQ(), (Transmitter::ShortFrame{1, 'Q'}));
    // What stands behind a frame is lost.
    EXPECT_EQ(wire.Exchange({7, 'U', 1, 0, 1, 165, 1, 7, 'U', 1, 0, 1, 165, 1}), Padded({0, 165}));
    EXPECT_EQ(wire.Read(), std::nullopt);
}

TEST(Transmitter, QueuesRepliesInOrderAndStartsEmptyAtEachOpen) {
    Wire wire;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(wire.Open());
        EXPECT_TRUE(wire.Write(kPoll));
        for (std::size_t i = 1; i < Transmitter::kQueueSize; ++i)
            EXPECT_TRUE(wire.Write(RemoteFrame({6}, 2)));
        EXPECT_EQ(wire.Exchange(kPoll), Padded({0, 165})) << "the first; another is too much";
        for (std::size_t i = 2; i < Transmitter::kQueueSize; ++i)
            EXPECT_EQ(wire.Read(), Padded({0, 6, 196}));
        EXPECT_TRUE(wire.Write({100, 'U', 1, 0, 94}));  // begun, and never ended
    }
    EXPECT_EQ(wire.Read(), Padded({0, 6, 196}));
    EXPECT_EQ(wire.Read(), std::nullopt);
}

TEST(Fault, ChangesItsCyclesAndNoOtherInAnOrderOfItsOwn) {
    Wire wire(R"({"faults": [
        {"cycle": 2, "kind": "status", "value": 7},
        {"cycle": 3, "kind": "flip", "byte": 0, "mask": 1},
        {"cycle": 4, "kind": "reply", "bytes": [0, 1]}, {"cycle": 4, "kind": "status", "value": 7},
        {"cycle": 5, "kind": "flip", "byte": 1, "mask": 129}, {"cycle": 5, "kind": "status", "value": 7},
        {"cycle": 6, "kind": "flip", "byte": 1, "mask": 3}, {"cycle": 6, "kind": "reply", "bytes": [0, 1]},
        {"cycle": 7, "through": 8, "kind": "readFails"}, {"cycle": 7, "kind": "reply", "bytes": [0, 165]}]})");
    wire.Play(
        "165 = 0 165; 165 /0; 165 /0; 165 /1 = 0 1; 165 = 7 36; 165 /0 = 0 2; 165 /1; 165 /1; 165 = 0 165");
    EXPECT_EQ(wire.clock.now, std::chrono::milliseconds(14)) << "one for each report that passed";
}

TEST(Fault, CutsACycleWhereItSaysAndKeepsTheTransmitterAwayForATimeOrToTheEndOfItsCycles) {
    for (const auto& [when, written] : {std::pair<std::string, int>{"open", 0}, {"write", 1}, {"read", 3}}) {
        SCOPED_TRACE(when);
        const std::string unplugged =
            R"({"reportMicroseconds": 0, "faults": [{"cycle": 1, "kind": "unplugged", "when": ")" + when;
        Wire wire(unplugged + R"(", "forMilliseconds": 5}]})");
        const bool open = wire.Open();
        int reports = 0;
        while (open && reports < 3 && wire.Write(kPoll))
            ++reports;
        EXPECT_EQ(reports, written);
        EXPECT_FALSE(open && wire.Read());
        wire.device.Close();
        for (const int wait : {4999, 1}) {
            wire.clock.now += std::chrono::microseconds(wait);
            EXPECT_EQ(wire.Open(), wait == 1);
        }
        Wire longer(unplugged + R"(", "through": 3}]})");
        for (const bool there : {when != "open", false, false, true}) {
            EXPECT_EQ(longer.Open(), there);
            longer.device.Close();
        }
    }
}

TEST(Remote, KeepsToItsRulesAndStartsAgainAfterARefusal) {
    struct Conversation {
        const char* behaviour;
        const char* script;
        std::string_view scenario = R"({"remote": {"memory": {"256": [193, 194, 195], "65535": [1, 3]}}})";
    };
    const std::vector<Conversation> conversations = {
        {"wraps at the end of the memory",
         "1 = 0 1; 255 255 4; 10 52 11 52 x4 = 0 122; 8 = 0 8; 1 = 0 1; 255 255 3 /8 = 0 10 11 255;"
         "2 = 0 2; 255 255 0 1 = 0 127"},
        {"clears the free bits of sections alone, for a value with bit 7",
         "7 = 0 7; 24 = 0 24 0; 8 = 0 8; 5 = 0 5 255; 7 = 0 7; 165 = 0 165 0; 8 = 0 8; 5 = 0 5 223",
         R"({"remote": {"free": 255}})"},
        {"reads as many words as the frame says, without echo",
         "8 = 0 8; 1 = 0 1; 1 0 2 /8 = 0 193 194; 8 = 0 8; 1 = 0 1; 1 0 0 /8 = 0; 165 = 0 165"},
        {"comes with the poll that it answers",
         "6 = 1 0 0; 165 = 1 0; 165 165 = 1 0; 165; 6 = 1 0 0; 165 = 0 165; 6 = 0 6 196",
         R"({"remote": {"arrivesAtPoll": 3}})"},
        {"refuses everything, if it is absent", "165 = 1 0; 0 /63 = 1; 1 /0", R"({"remote": null})"},
        {"refuses unknown commands", "3 = 1 0; /1 = 1; 6 6 = 1 0 0; 3; 8 = 0 8; 6 = 1 0 0; 6 = 0 6 196"},
        {"refuses a command for a header or a range", "1 = 0 1; 2 = 1 0; 2 = 0 2; 1 0 0 = 1 0; 165 = 0 165"},
        {"refuses data of another size than announced, which are not stored",
         "1 = 0 1; 1 0 6; 1 52 2 52 x4 = 1 0; 1 52 2 52 3 52 x4 = 1 0; 2 = 0 2; 1 0 0 0 = 0 9"},
        {"refuses data at the commands' LinkFactor",
         "1 = 0 1; 1 0 2; 1 52 = 1 0; 1 52 x4 = 1 0; 165 = 0 165"},
        {"refuses commands at other LinkFactors",
         "165 x0 = 1 0; 165 x2 = 1 0; 165 x257 = 1 0; 8 = 0 8; 5 x4 = 1 0 0; 5 /1 = 0 5"},
        {"hears twice the LinkFactor behind the second kind",
         "165 x1 = 1 0; 165 x3 = 1 0; 1 x2 = 0 1; 1 0 2 x2; 1 52 x8 = 0 195",
         R"({"interfaces": [{"vendorId": 11025}]})"},
    };
    for (const Conversation& each : conversations) {
        SCOPED_TRACE(each.behaviour);
        Wire(each.scenario).Play(each.script);
    }
}

}  // namespace
}  // namespace vento::simulator
