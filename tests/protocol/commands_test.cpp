#include "protocol/commands.h"

#include <gtest/gtest.h>

#include <tuple>

#include "protocol/code_lists.h"
#include "protocol/frame.h"
#include "protocol/transmitter_kinds.h"
#include "support/fakes.h"

namespace vento {
namespace {

using test::Bytes;
using test::ScriptedHidHost;

TEST(Commands, OnlyStatusZeroAndTheRightEchoPass) {
    const auto write = [](auto& link) { return WriteSectionFlags(link, 24); };
    const auto read = [](auto& link) {
        std::uint8_t flags = 0;
        return ReadSectionFlags(link, flags);
    };
    // With the payloads, one a frame, that are good.
    using Command = std::function<SequenceResult(Link&)>;
    const std::vector<std::tuple<Command, std::vector<Bytes>, ResultCode>> cases{
        {OpenBlockWrite, {{0, 1}}, ResultCode::refused},
        {write, {{0, 7}, {0, 24}}, ResultCode::remoteNotDetected},
        {read, {{0, 8}, {0, 5, 112}}, ResultCode::sectionFlagsFailed},
        {ActivateFirstSection, {{0, 8}, {0, 2, 0x30}, {0, 0x36}}, ResultCode::activationFailed}};
    const auto send = [](const Command& command, const std::vector<Bytes>& payloads, std::size_t cycles) {
        ScriptedHidHost host;
        host.answer = [&](const Bytes&) {
            const Bytes& payload = payloads.at(host.frames.size() - 1);
            return std::deque<Bytes>(payload.empty() ? 0 : 1, payload);
        };
        Link link(host, IsTransmitter);
        const SequenceResult result = command(link);
        EXPECT_EQ(host.frames.size(), cycles);
        EXPECT_EQ(result.diagnostic.Empty(), !result.Failed());
        return result.code;
    };
    for (const auto& [command, good, failure] : cases) {
        EXPECT_EQ(send(command, good, good.size()), ResultCode::success);
        for (std::size_t frame = 0; frame < good.size(); ++frame) {
            const std::uint8_t echo = good[frame][1];
            for (const Bytes& wrong : {Bytes{}, Bytes{2, echo}, Bytes{0, std::uint8_t(echo ^ 1)}}) {
                auto payloads = good;
                payloads[frame] = wrong;
                EXPECT_EQ(send(command, payloads, frame + 1), failure) << good.size() << ", frame " << frame;
            }
        }
    }
    EXPECT_EQ(send(ReleaseRemote, {{}}, 1), ResultCode::success)
        << "the zeros of a lost reply are its good one";
}

TEST(Commands, TheActivationByteNamesTheFirstSectionInUse) {
    for (const auto& [state, expected] : std::vector<std::pair<int, int>>{
             {0x00, 0x00}, {0xE0, 0xE0}, {0x1F, 0x11}, {0xB0, 0xB2}, {0x70, 1}, {0xFF, 1}}) {
        EXPECT_EQ(ActivationByte(static_cast<std::uint8_t>(state)), expected) << state;
    }
}

TEST(Frames, ForTheRemoteHoldUpTo249Bytes) {
    for (const std::size_t size : {1U, 249U}) {
        const Bytes sent(size, 9);
        Bytes expected(size + 6, 9);
        std::ranges::copy(Bytes{std::uint8_t(size + 6), 85, 0x34, 0x12, std::uint8_t(size)},
                          expected.begin());
        expected.back() = 7;
        const Frame frame = BuildRemoteFrame(0x1234, sent, 7);
        EXPECT_TRUE(std::ranges::equal(frame.Bytes(), expected)) << size;
    }
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
