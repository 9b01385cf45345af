#include "simulator/transmitter.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

const Bytes kPoll = Step("165 /1").Frame();
const std::optional<Bytes> kGoodPoll = Padded({0, 165});

TEST(Transmitter, PutsReportsTogetherUntilTheLengthByteIsSatisfied) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    Bytes longest(255);  // which the remote can make nothing of
    std::ranges::copy(Bytes{255, 'U', 1, 0, 249}, longest.begin());
    longest.back() = 1;
    EXPECT_TRUE(wire.Write(std::span(longest).first(192)));
    EXPECT_EQ(wire.Read(), std::nullopt);
    EXPECT_TRUE(wire.Write(std::span(longest).subspan(192)));
    EXPECT_EQ(wire.Read(), Padded({1}));
    EXPECT_EQ(wire.Read(), std::nullopt);
}

TEST(Transmitter, IgnoresWhatIsNoFrameAndHearsTheNext) {
    const std::vector<Bytes> ignored = {
        {0},  // of no length
        {1, 'U'},
        {2, 'Q'},
        {1, 'R'},
        {3, 'R'},
        {18, 'T'},
        {20, 'T'},          // not as long as their types are
        {5, 'U', 1, 0, 0},  // no room for the count of reply bytes
        {8, 'U', 1, 0, 1, 165, 1, 1},
        {7, 'U', 1, 0, 2, 165, 1},                                     // not as long as its send bytes say
        {7, 'V', 1, 0, 1, 165, 1},                                     // of no type
        Padded({100, 'V', 1, 0, 1, 165, 1, 7, 'U', 1, 0, 1, 165, 1}),  // the same, in two reports
    };
    for (const Bytes& frame : ignored) {
        SCOPED_TRACE(testing::PrintToString(frame));
        Wire wire;
        ASSERT_TRUE(wire.Open());
        EXPECT_TRUE(wire.Write(frame));
        if (frame.size() == platform::kReportPayload) {
            EXPECT_TRUE(wire.Write(kPoll));
        }
        EXPECT_EQ(wire.Read(), std::nullopt);
        EXPECT_TRUE(wire.Write(kPoll));
        EXPECT_EQ(wire.Read(), kGoodPoll);
        const Transmitter& transmitter = *wire.host.TransmitterAt(0);
        EXPECT_FALSE(transmitter.LastTimingFrame() || transmitter.LastFrameR() || transmitter.LastFrameQ());
    }
}

TEST(Transmitter, IgnoresWhatStandsBehindAFrame) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    Bytes twoPolls = kPoll;
    twoPolls.insert(twoPolls.end(), kPoll.begin(), kPoll.end());
    EXPECT_TRUE(wire.Write(twoPolls));
    EXPECT_EQ(wire.Read(), kGoodPoll);
    EXPECT_EQ(wire.Read(), std::nullopt);
}

TEST(Transmitter, KeepsFramesForItselfAndAnswersNone) {
    Wire wire;
    const Bytes timing = {0x13, 0x54, 0x0F, 0x02, 0x02, 0x08, 0x04, 0xA8, 0x26, 0x4B,
                          0xBC, 0x87, 0x00, 0xA5, 0x00, 0x0E, 0x01, 0x4A, 0x01};
    for (const Bytes& frame : {timing, Bytes{2, 'R'}, Bytes{1, 'Q'}})
        EXPECT_EQ(wire.Exchange(frame), std::nullopt);
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
    EXPECT_TRUE(wire.Write(Bytes{100, 'U', 1, 0, 94}));
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
        for (std::size_t i = 0; i < Transmitter::kQueueSize; ++i)
            EXPECT_TRUE(wire.Write(Step("6 /2").Frame()));
        EXPECT_EQ(wire.Read(), kGoodPoll);
        for (std::size_t i = 1; i < Transmitter::kQueueSize; ++i)
            EXPECT_EQ(wire.Read(), Padded({0, 6, 196}));
        EXPECT_EQ(wire.Read(), std::nullopt);
    }
}

}  // namespace
}  // namespace vento::simulator
