#include "protocol/commands.h"

#include <gtest/gtest.h>

#include "protocol/code_lists.h"
#include "protocol/link_timing.h"
#include "support/fakes.h"

namespace vento {
namespace {

using test::Bytes;
using test::ScriptedHidHost;

// A link whose transmitter gives these payloads, one a frame.
struct Answers {
    ScriptedHidHost host;
    std::deque<Bytes> payloads;
    Link link{host, 1};

    explicit Answers(std::deque<Bytes> list) : payloads(std::move(list)) {
        host.answer = [this](const Bytes&) {
            const Bytes payload = payloads.front();
            payloads.pop_front();
            return std::deque<Bytes>(payload.empty() ? 0 : 1, payload);
        };
    }
};

TEST(Commands, OnlyStatusZeroAndTheRightEchoPass) {
    struct Case {
        std::function<ResultCode(Reply&, Link&)> send;
        std::deque<Bytes> good;  // a payload for each frame
        ResultCode failure;
    };
    const ResultCode code{77};
    std::uint8_t flags = 0;
    const auto writeFlags = [](Reply& reply, Link& link) { return WriteSectionFlags(reply, 24, link); };
    const auto readFlags = [&](Reply& reply, Link& link) {
        return ReadSectionFlags(reply, flags, link, code);
    };
    for (const Case& c :
         {Case{OpenBlockWrite, {{0, 1}}, ResultCode::refused},
          Case{writeFlags, {{0, 7}, {0, 24}}, ResultCode::remoteNotDetected},
          Case{readFlags, {{0, 8}, {0, 5, 112}}, code},
          Case{ActivateFirstSection, {{0, 8}, {0, 2, 0x30}, {0, 0x36}}, ResultCode::activationFailed}}) {
        Answers good(c.good);
        Reply reply{};
        EXPECT_EQ(c.send(reply, good.link), ResultCode::success);
        for (std::size_t frame = 0; frame < c.good.size(); ++frame) {
            const Bytes& right = c.good[frame];
            for (const Bytes& wrong : {Bytes{}, Bytes{2, right[1]}, Bytes{0, std::uint8_t(right[1] ^ 1)}}) {
                Answers answers(c.good);
                answers.payloads[frame] = wrong;
                EXPECT_EQ(c.send(reply, answers.link), c.failure) << good.host.cycles << ", frame " << frame;
                EXPECT_EQ(answers.host.cycles, static_cast<int>(frame) + 1);
            }
        }
    }
    Answers silent(std::deque<Bytes>(1));
    Reply reply{};
    EXPECT_EQ(ReleaseRemote(reply, silent.link, code), ResultCode::success) << "zeros are its good reply";
}

TEST(Commands, ABlockIsReadFromAnyOffset) {
    Answers answers({{0, 8}, {0, 1}, {0, 0xC1, 0xC2}});
    Bytes memory(2);
    EXPECT_EQ(ReadRemoteBlock(0x1234, memory, answers.link, ResultCode::blockReadFailed),
              ResultCode::success);
    EXPECT_EQ(memory, (Bytes{0xC1, 0xC2}));
    EXPECT_EQ(Bytes(&answers.host.frames[2][5], &answers.host.frames[2][9]), (Bytes{0x12, 0x34, 2, 8}));
}

TEST(Commands, TheActivationByteNamesTheFirstSectionInUse) {
    for (const auto& [state, expected] : std::vector<std::pair<int, int>>{
             {0x00, 0x00}, {0xE0, 0xE0}, {0x1F, 0x11}, {0xB0, 0xB2}, {0x70, 1}, {0xFF, 1}}) {
        EXPECT_EQ(ActivationByte(static_cast<std::uint8_t>(state)), expected) << state;
    }
}

TEST(LinkTiming, HalvesAreRoundedToTheEvenNumber) {
    for (const auto& [value, percent, expected] : std::vector<std::array<std::int16_t, 3>>{
             {50, 5, 2}, {70, 5, 4}, {-50, 5, -2}, {-70, 5, -4}, {49, 5, 2}, {51, 5, 3}}) {
        EXPECT_EQ(PercentOf(value, percent), expected) << value;
    }
}

TEST(LinkTiming, FramesForTheTransmitterAreNotAnswered) {
    const Bytes timing{0x13, 0x54, 0x0F, 0x02, 0x02, 0x02, 0x04, 0xA8, 0x12, 0x25,
                       0x5D, 0xFF, 0x00, 0x59, 0x01, 0xFE, 0x01, 0xB2, 0x02};
    ScriptedHidHost host;
    std::int32_t vendorId = 0;
    std::int32_t productId = 0;
    SendFrameR(host, LinkTimingFor(11025), vendorId, productId);
    SendFrameQ(host, vendorId, productId);
    std::vector<Bytes> expected{timing, {2, 82}, {1, 81}};
    for (Bytes& frame : expected)
        frame.resize(64);
    EXPECT_EQ(host.frames, expected);
    EXPECT_EQ(host.calls, "owac");
    EXPECT_EQ(vendorId, 1240);
}

TEST(CodeLists, PiecesAreNumbersFrom0To255) {
    EXPECT_EQ(ParseCodeList(" 7 , 0000000042,0,255").bytes, (Bytes{7, 42, 0, 255}));
    for (const std::string bad : {"", "1 2", "256", "4,-1", "1,2x", "1,,2", "1,255,"}) {
        const ParsedCodeList list = ParseCodeList(bad);
        EXPECT_EQ(list.bad ? list.bad->place : 0, list.bytes.size() + 1) << bad;
    }
}

}  // namespace
}  // namespace vento
