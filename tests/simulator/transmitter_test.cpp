#include "simulator/transmitter.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

const Bytes kPoll = RemoteFrame({165}, 1);
const Bytes kGoodPoll = Padded({0, 165});

TEST(Transmitter, PutsReportsTogetherUntilTheLengthByteIsSatisfied) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    // 249 send bytes are the most that a frame can carry; the remote can make nothing of them.
    const Bytes longest = RemoteFrame(Bytes(249), 1);
    EXPECT_TRUE(wire.WriteFrame(std::span(longest).first(192)));
    EXPECT_EQ(wire.Read(), std::nullopt);
    EXPECT_TRUE(wire.WriteFrame(std::span(longest).subspan(192)));
    EXPECT_EQ(wire.Read(), Padded({1}));
    EXPECT_EQ(wire.Read(), std::nullopt);
}

TEST(Transmitter, IgnoresWhatStandsBehindAFrame) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    Bytes twoPolls = kPoll;
    twoPolls.insert(twoPolls.end(), kPoll.begin(), kPoll.end());
    EXPECT_TRUE(wire.WriteFrame(twoPolls));
    EXPECT_EQ(wire.Read(), kGoodPoll);
    EXPECT_EQ(wire.Read(), std::nullopt);
}

TEST(Transmitter, IgnoresFramesOfNoTypeOrLengthAndHearsTheNext) {
    const std::vector<Bytes> bad = {
        {},                            // length 0
        {1, 'U'},                      // shorter than its own type byte
        {5, 'U', 1, 0, 0},             // no room for the count of reply bytes
        {8, 'U', 1, 0, 1, 165, 1, 1},  // longer than its send bytes
        {7, 'U', 1, 0, 2, 165, 1},     // shorter than its send bytes
        {7, 'V', 1, 0, 1, 165, 1},     // of no type
        {2, 'Q'},
        {1, 'R'},
        {3, 'R'},  // not as long as their types are
        {18, 'T'},
        {20, 'T'},
    };
    for (const Bytes& frame : bad) {
        Wire wire;
        ASSERT_TRUE(wire.Open());
        EXPECT_TRUE(wire.Write(frame));
        EXPECT_EQ(wire.Read(), std::nullopt) << testing::PrintToString(frame);
        EXPECT_TRUE(wire.Write(kPoll));
        EXPECT_EQ(wire.Read(), kGoodPoll) << testing::PrintToString(frame);
        EXPECT_FALSE(wire.host.TransmitterAt(0)->LastTimingFrame() ||
                     wire.host.TransmitterAt(0)->LastFrameR() || wire.host.TransmitterAt(0)->LastFrameQ());
    }
}

TEST(Transmitter, SwallowsALongFrameOfNoTypeWhole) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    EXPECT_TRUE(wire.Write({100, 'V'}));
    EXPECT_TRUE(wire.Write(kPoll));  // bytes 64 to 99 of that frame
    EXPECT_EQ(wire.Read(), std::nullopt);
}

TEST(Transmitter, KeepsFramesForItselfAndAnswersNone) {
    Wire wire;
    const Bytes timing = {0x13, 0x54, 0x0F, 0x02, 0x02, 0x08, 0x04, 0xA8, 0x26, 0x4B,
                          0xBC, 0x87, 0x00, 0xA5, 0x00, 0x0E, 0x01, 0x4A, 0x01};
    for (const Bytes& frame : {timing, Bytes{2, 'R'}, Bytes{1, 'Q'}}) {
        EXPECT_EQ(wire.Exchange(frame), std::nullopt);
    }
    const Transmitter& transmitter = *wire.host.TransmitterAt(0);
    ASSERT_TRUE(transmitter.LastTimingFrame());
    EXPECT_TRUE(std::ranges::equal(*transmitter.LastTimingFrame(), timing));
    EXPECT_EQ(transmitter.LastFrameR(), (Transmitter::ShortFrame{2, 'R'}));
    EXPECT_EQ(transmitter.LastFrameQ(), (Transmitter::ShortFrame{1, 'Q'}));
}

TEST(Transmitter, StartsEmptyAtEachOpen) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    EXPECT_TRUE(wire.Write(kPoll));
    EXPECT_TRUE(wire.Write({100, 'U', 1, 0, 94}));
    wire.host.Close(wire.device);
    ASSERT_TRUE(wire.Open());
    EXPECT_EQ(wire.Read(), std::nullopt);
    EXPECT_TRUE(wire.Write(kPoll));
    EXPECT_EQ(wire.Read(), kGoodPoll);
}

TEST(Transmitter, QueuesUnreadReportsInOrderAndLosesWhatIsTooMuch) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(wire.Write(kPoll));
        for (std::size_t i = 0; i < Transmitter::kQueueSize; ++i) {
            EXPECT_TRUE(wire.Write(RemoteFrame({6}, 2)));
        }
        EXPECT_EQ(wire.Read(), kGoodPoll);
        for (std::size_t i = 1; i < Transmitter::kQueueSize; ++i)
            EXPECT_EQ(wire.Read(), Padded({0, 6, 196}));
        EXPECT_EQ(wire.Read(), std::nullopt);
    }
}

}  // namespace
}  // namespace vento::simulator
