#include "protocol/commands.h"

#include <gtest/gtest.h>

#include "protocol/code_lists.h"
#include "protocol/link_timing.h"
#include "protocol/section_table.h"
#include "support/fakes.h"

namespace vento {
namespace {

using test::Bytes;
using test::ScriptedHidHost;

// The frames of a host's cycles, cut to their own lengths.
std::vector<Bytes> FramesOf(const ScriptedHidHost& host) {
    std::vector<Bytes> frames;
    for (Bytes frame : host.frames) {
        frame.resize(frame[1] == 'Q' ? 2 : frame[0]);
        frames.push_back(std::move(frame));
    }
    return frames;
}

// A transmitter that gives these payloads, one a frame.
struct Answers {
    ScriptedHidHost host;
    std::deque<Bytes> payloads;
    Link link{host, 1};

    explicit Answers(std::deque<Bytes> list) : payloads(std::move(list)) {
        host.answer = [this](const Bytes&) {
            std::deque<Bytes> now;
            if (!payloads.empty()) {
                if (!payloads.front().empty()) now.push_back(payloads.front());
                payloads.pop_front();
            }
            return now;
        };
    }
};

TEST(Commands, FramesAreExactToTheByte) {
    Answers answers({{0, 6, 196}, {0, 8}, {0, 1}, {0, 0xC1, 0xC2, 3, 4, 5, 6, 7, 8}});
    Reply reply{};
    std::uint8_t version = 0;
    EXPECT_EQ(ReadRemoteVersion(reply, version, answers.link, ResultCode::versionFailed),
              ResultCode::success);
    EXPECT_EQ(version, 196);
    answers.link.linkFactor = 2;
    std::array<std::uint8_t, 8> memory{};
    EXPECT_EQ(ReadRemoteBlock(0x1234, memory, answers.link, ResultCode::blockReadFailed),
              ResultCode::success);
    EXPECT_EQ(memory, (std::array<std::uint8_t, 8>{0xC1, 0xC2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(FramesOf(answers.host), (std::vector<Bytes>{{7, 85, 1, 0, 1, 6, 2},
                                                          {7, 85, 2, 0, 1, 8, 1},
                                                          {7, 85, 2, 0, 1, 1, 1},
                                                          {9, 85, 2, 0, 3, 0x12, 0x34, 8, 8}}));
}

TEST(Commands, OnlyStatusZeroAndTheRightEchoPass) {
    using Send = std::function<ResultCode(Reply&, Link&)>;
    std::uint8_t value = 0;
    const ResultCode code{77};
    struct Case {
        const char* name;
        Send send;
        std::deque<Bytes> good;  // a payload for each frame
        ResultCode failure;
    };
    const std::vector<Case> cases{
        {"release", [&](Reply& r, Link& l) { return ReleaseRemote(r, l, code); }, {{0, 0}}, code},
        {"open write", [](Reply& r, Link& l) { return OpenBlockWrite(r, l); }, {{0, 1}}, ResultCode::refused},
        {"open verify",
         [](Reply& r, Link& l) { return OpenBlockVerify(r, l); },
         {{0, 2}},
         ResultCode::refused},
        {"count", [&](Reply& r, Link& l) { return ReadSectionCount(r, value, l, code); }, {{0, 4, 3}}, code},
        {"write flags",
         [](Reply& r, Link& l) { return WriteSectionFlags(r, 24, l); },
         {{0, 7}, {0, 24}},
         ResultCode::remoteNotDetected},
        {"read flags",
         [&](Reply& r, Link& l) { return ReadSectionFlags(r, value, l, code); },
         {{0, 8}, {0, 5, 112}},
         code},
        {"activate",
         [](Reply& r, Link& l) { return ActivateFirstSection(r, l); },
         {{0, 8}, {0, 2, 0x30}, {0, 0x36}},
         ResultCode::activationFailed},
    };
    for (const Case& c : cases) {
        Answers good(c.good);
        Reply reply{};
        EXPECT_EQ(c.send(reply, good.link), ResultCode::success) << c.name;
        EXPECT_EQ(good.host.cycles, static_cast<int>(c.good.size())) << c.name;
        for (std::size_t frame = 0; frame < c.good.size(); ++frame) {
            const auto failsWith = [&](Bytes payload) {
                std::deque<Bytes> bad = c.good;
                bad[frame] = std::move(payload);
                Answers answers(bad);
                EXPECT_EQ(c.send(reply, answers.link), c.failure) << c.name << ", frame " << frame;
                EXPECT_EQ(answers.host.cycles, static_cast<int>(frame) + 1) << c.name;
            };
            Bytes refused = c.good[frame];
            refused[0] = 2;
            failsWith(refused);
            Bytes otherEcho = c.good[frame];
            otherEcho[1] ^= 1;
            failsWith(otherEcho);
            if (std::string(c.name) != "release") failsWith({});
        }
        Answers absent(c.good);
        absent.host.interfaces.clear();
        EXPECT_EQ(c.send(reply, absent.link), c.failure) << c.name;
    }
    Answers silent(std::deque<Bytes>{});
    Reply reply{};
    EXPECT_EQ(ReleaseRemote(reply, silent.link, code), ResultCode::success) << "zeros are its good reply";
}

TEST(Commands, SectionOffsetsComeLowByteFirstAndCountsAreChecked) {
    Answers answers({{0, 4, 3}, {0, 5, 0x34, 0x12, 0xFF, 0xFF, 0x00, 0x80}});
    SectionOffsets offsets;
    EXPECT_EQ(ReadSectionOffsets(offsets, answers.link).code, ResultCode::success);
    EXPECT_EQ(offsets.count, 3U);
    EXPECT_EQ(offsets.words, (std::array<std::uint16_t, 3>{0x1234, 0xFFFF, 0x8000}));
    EXPECT_EQ(FramesOf(answers.host).back(), (Bytes{7, 85, 1, 0, 1, 5, 7}));
    for (const Bytes& reply : {Bytes{0, 4, 0}, Bytes{0, 4, 4}, Bytes{0, 4, 255}}) {
        Answers odd({reply});
        EXPECT_EQ(ReadSectionOffsets(offsets, odd.link).code, ResultCode::unusableData);
        EXPECT_EQ(odd.host.cycles, 1);
    }
}

TEST(Commands, TheActivationByteNamesTheFirstSectionInUse) {
    const std::vector<std::pair<int, int>> cases{{0x00, 0x00}, {0x30, 0x32}, {0xE0, 0xE0}, {0x70, 1},
                                                 {0x1F, 0x11}, {0xD5, 0xD1}, {0xFF, 1},    {0xB0, 0xB2}};
    for (const auto& [state, expected] : cases) {
        EXPECT_EQ(ActivationByte(static_cast<std::uint8_t>(state)), expected) << state;
    }
}

TEST(LinkTiming, FramesOfBothKinds) {
    const auto frameFor = [](std::int32_t vendorId) {
        const Frame frame = BuildTimingFrame(LinkTimingFor(vendorId));
        return Bytes(frame.Bytes().begin(), frame.Bytes().end());
    };
    EXPECT_EQ(frameFor(1240), (Bytes{0x13, 0x54, 0x0F, 0x02, 0x02, 0x08, 0x04, 0xA8, 0x26, 0x4B, 0xBC, 0x87,
                                     0x00, 0xA5, 0x00, 0x0E, 0x01, 0x4A, 0x01}));
    EXPECT_EQ(frameFor(11025), (Bytes{0x13, 0x54, 0x0F, 0x02, 0x02, 0x02, 0x04, 0xA8, 0x12, 0x25, 0x5D, 0xFF,
                                      0x00, 0x59, 0x01, 0xFE, 0x01, 0xB2, 0x02}));
    EXPECT_EQ(LinkTimingFor(1240).linkFactor, 1);
    EXPECT_EQ(LinkTimingFor(11025).linkFactor, 2);
    const std::vector<std::array<std::int16_t, 3>> percents{{150, 10, 15}, {600, 15, 90}, {50, 5, 2},
                                                            {70, 5, 4},    {-50, 5, -2},  {-70, 5, -4},
                                                            {49, 5, 2},    {51, 5, 3}};
    for (const auto& [value, percent, expected] : percents)
        EXPECT_EQ(PercentOf(value, percent), expected);

    ScriptedHidHost host;
    std::int32_t vendorId = 0;
    std::int32_t productId = 0;
    SendFrameR(host, LinkTimingFor(1240), vendorId, productId);
    SendFrameQ(host, vendorId, productId);
    EXPECT_EQ(FramesOf(host), (std::vector<Bytes>{frameFor(1240), {2, 82}, {1, 81}}));
    EXPECT_EQ(host.cycles, 3);
    EXPECT_EQ(host.reads, 0);
    EXPECT_EQ(vendorId, 1240);
}

TEST(CodeLists, PiecesAreNumbersFrom0To255) {
    struct Case {
        std::string text;
        Bytes bytes;
        std::size_t badPlace;  // 0: none
    };
    const std::vector<Case> cases{{"1,2,255", {1, 2, 255}, 0},
                                  {" 7 , 000000000000000000042", {7, 42}, 0},
                                  {"0", {0}, 0},
                                  {"", {}, 1},
                                  {"1,", {1}, 2},
                                  {",1", {}, 1},
                                  {"1,,2", {1}, 2},
                                  {"256", {}, 1},
                                  {"4,-1", {4}, 2},
                                  {"1,2x", {1}, 2},
                                  {"1,2\r", {1}, 2},
                                  {"1 2", {}, 1},
                                  {"99999999999999999999", {}, 1}};
    for (const Case& c : cases) {
        const ParsedCodeList list = ParseCodeList(c.text);
        EXPECT_EQ(list.bytes, c.bytes) << c.text;
        EXPECT_EQ(list.bad ? list.bad->place : 0, c.badPlace) << c.text;
    }
}

}  // namespace
}  // namespace vento
