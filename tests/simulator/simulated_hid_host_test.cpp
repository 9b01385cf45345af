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

TEST(Fault, CutsACycleWhereItSaysAndKeepsTheTransmitterAwayForATime) {
    for (const auto& [when, written] : {std::pair<std::string, int>{"open", 0}, {"write", 1}, {"read", 3}}) {
        SCOPED_TRACE(when);
        Wire wire(R"({"reportMicroseconds": 0, "faults": [{"cycle": 1, "kind": "unplugged", "when": ")" +
                  when + R"(", "forMilliseconds": 5}]})");
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
    }
}

TEST(Fault, KeepsTheTransmitterAwayToTheEndOfItsCyclesHoweverItWent) {
    for (const std::string when : {"open", "write", "read"}) {
        Wire wire(R"({"faults": [{"cycle": 1, "through": 3, "kind": "unplugged", "when": ")" + when +
                  R"("}]})");
        for (const bool there : {when != "open", false, false, true}) {
            EXPECT_EQ(wire.Open(), there) << when;
            wire.device.Close();
        }
    }
}

}  // namespace
}  // namespace vento::simulator
