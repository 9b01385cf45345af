#include "protocol/wait_for_remote.h"

#include <gtest/gtest.h>

#include <tuple>

#include "protocol/transmitter_kinds.h"
#include "support/fakes.h"

namespace vento {
namespace {

using test::Bytes;

// One wait, with a remote that answers the polls for which `good` says so.
struct Wait {
    test::ScriptedHidHost host;
    test::FakeClock clock;
    Label status;
    Button cancel{false, false};
    ProgressBar bar;
    std::function<bool(int poll)> good = [](int) { return false; };
    bool answers = true;  // false: not even a refusal comes back
    int cancelledAt = 0;  // this yield
    std::chrono::seconds perYield{0};
    int polls = 0;
    int yields = 0;
    std::string captions;

    ResultCode Run(std::uint16_t linkFactor) {
        host.answer = [this](const Bytes& frame) {
            EXPECT_EQ(frame[5], 165);
            ++polls;
            return std::deque<Bytes>(answers ? 1 : 0, good(polls) ? Bytes{0, 165} : Bytes{1, 0});
        };
        status.Observe([this] { captions += status.Caption() + "|"; });
        const auto yield = [this] {
            EXPECT_TRUE(cancel.Enabled());
            clock.now += perYield;
            if (++yields == cancelledAt) cancel.SetTag("True");
        };
        Link link(host, IsTransmitter);
        link.linkFactor = linkFactor;
        const SequenceResult result = WaitForRemote({status, cancel, bar, "waiting", clock, yield}, link);
        EXPECT_EQ(result.diagnostic.Empty(), !result.Failed());
        EXPECT_EQ(captions, result.code == ResultCode::success ? "waiting||" : "waiting|");
        EXPECT_FALSE(cancel.Enabled());
        EXPECT_EQ(cancel.Tag(), "False");
        return result.code;
    }
};

TEST(WaitForRemote, CountsPollsAndSeesTheCancelFlagAfterTheYieldThatSetIt) {
    using enum ResultCode;
    constexpr int kNever = 99999;
    // LinkFactor, the first good poll, each tenth poll up to which is not good, polls, result, when
    // cancelled.
    const std::vector<std::tuple<const char*, std::uint16_t, int, int, int, ResultCode, int>> cases{
        {"there from the start", 1, 1, 0, 10, success, 0},
        {"a broken run", 1, 1, 10, 20, success, 0},
        {"tenth good poll in the last pass", 2, 10000, 0, 10009, success, 0},
        {"never there, first kind", 1, kNever, 0, 20000, remoteNotDetected, 0},
        {"never there, second kind", 2, kNever, 0, 10000, remoteNotDetected, 0},
        {"nine good polls in every pass", 0, 1, kNever, 2000, remoteNotDetected, 0},
        {"cancelled before the first poll", 1, 1, 0, 1, cancelled, 1},
        {"cancelled after the tenth good poll", 1, 1, 0, 10, cancelled, 11}};
    for (const auto& [name, linkFactor, firstGood, tenthBadUntil, polls, code, cancelledAt] : cases) {
        SCOPED_TRACE(name);
        Wait wait;
        wait.good = [first = firstGood, until = tenthBadUntil](int poll) {
            return poll >= first && (poll % 10 != 0 || poll > until);
        };
        wait.cancelledAt = cancelledAt;
        EXPECT_EQ(wait.Run(linkFactor), code);
        EXPECT_EQ(wait.polls, polls);
        EXPECT_EQ(wait.yields, polls + (code == success ? 2 : 1));
    }
}

TEST(WaitForRemote, GivesUpOnATransmitterThatIsSilentForThreeMinutes) {
    for (const bool answers : {false, true}) {  // one that answers is not silent, however long it takes
        Wait wait;
        wait.answers = answers;
        wait.perYield = std::chrono::seconds(1);
        EXPECT_EQ(wait.Run(2), ResultCode::remoteNotDetected);
        EXPECT_EQ(wait.polls, answers ? 10000 : 180);
    }
}

}  // namespace
}  // namespace vento
