#include "protocol/wait_for_remote.h"

#include <gtest/gtest.h>

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
    std::function<bool(int poll)> good = [](int) { return true; };
    std::function<void(Wait&)> onYield = [](Wait&) {};
    bool answers = true;  // false: not even a refusal comes back
    int polls = 0;
    int yields = 0;
    std::vector<std::string> captions;

    SequenceResult Run(std::uint16_t linkFactor) {
        host.answer = [this](const Bytes& frame) {
            EXPECT_EQ(frame[5], 165);
            ++polls;
            if (!answers) return std::deque<Bytes>{};
            return std::deque<Bytes>{good(polls) ? Bytes{0, 165} : Bytes{1, 0}};
        };
        status.Observe([this] { captions.push_back(status.Caption()); });
        Link link{host, linkFactor};
        return WaitForRemote({status, cancel, "waiting", clock,
                              [this] {
                                  ++yields;
                                  EXPECT_TRUE(cancel.Enabled());
                                  onYield(*this);
                              }},
                             link);
    }
};

TEST(WaitForRemote, CountsPolls) {
    struct Case {
        const char* name;
        std::uint16_t linkFactor;
        std::function<bool(int)> good;
        ResultCode code;
        int polls;
        int yields;
    };
    const std::vector<Case> cases{
        {"there from the start", 1, [](int) { return true; }, ResultCode::success, 10, 12},
        {"a broken run begins anew", 1, [](int poll) { return poll != 10; }, ResultCode::success, 20, 22},
        {"never there, first kind", 1, [](int) { return false; }, ResultCode::remoteNotDetected, 20000,
         20001},
        {"never there, second kind", 2, [](int) { return false; }, ResultCode::remoteNotDetected, 10000,
         10001},
        {"no link factor", 0, [](int) { return false; }, ResultCode::remoteNotDetected, 200, 201},
        {"tenth good poll in the last pass", 2, [](int poll) { return poll >= 10000; }, ResultCode::success,
         10009, 10011},
        {"nine good polls in every pass", 0, [](int poll) { return poll % 10 != 0; },
         ResultCode::remoteNotDetected, 2000, 2001},
    };
    for (const Case& c : cases) {
        Wait wait;
        wait.good = c.good;
        const SequenceResult result = wait.Run(c.linkFactor);
        EXPECT_EQ(result.code, c.code) << c.name;
        EXPECT_EQ(result.diagnostic.empty(), c.code == ResultCode::success) << c.name;
        EXPECT_EQ(wait.polls, c.polls) << c.name;
        EXPECT_EQ(wait.yields, c.yields) << c.name;
        const std::vector<std::string> seen{"waiting", ""};
        EXPECT_EQ(wait.captions, c.code == ResultCode::success ? seen : std::vector<std::string>{"waiting"})
            << c.name;
        EXPECT_FALSE(wait.cancel.Enabled()) << c.name;
        EXPECT_EQ(wait.cancel.Tag(), "False") << c.name;
    }
}

TEST(WaitForRemote, SeesTheCancelFlagAfterTheYieldThatSetIt) {
    struct Case {
        const char* name;
        bool there;
        int yield;  // at which the operator cancels
        int polls;
    };
    for (const Case& c : {Case{"before the first poll", true, 1, 1}, Case{"in a good run", true, 5, 4},
                          Case{"after the tenth good poll", true, 11, 10},
                          Case{"without a remote", false, 1, 1}, Case{"at the end of a pass", false, 4, 3}}) {
        Wait wait;
        wait.good = [&](int) { return c.there; };
        wait.onYield = [&](Wait& w) {
            if (w.yields == c.yield) w.cancel.SetTag("True");
        };
        EXPECT_EQ(wait.Run(1).code, ResultCode::cancelled) << c.name;
        EXPECT_EQ(wait.polls, c.polls) << c.name;
        EXPECT_EQ(wait.captions, std::vector<std::string>{"waiting"}) << c.name;
        EXPECT_FALSE(wait.cancel.Enabled()) << c.name;
        EXPECT_EQ(wait.cancel.Tag(), "False") << c.name;
    }
}

TEST(WaitForRemote, GivesUpOnATransmitterThatIsSilentForThreeMinutes) {
    Wait silent;
    silent.answers = false;
    silent.onYield = [](Wait& w) { w.clock.now += std::chrono::seconds(1); };
    EXPECT_EQ(silent.Run(1).code, ResultCode::remoteNotDetected);
    EXPECT_EQ(silent.polls, 180);

    Wait refusing;  // one that answers is not silent, however long it takes
    refusing.good = [](int) { return false; };
    refusing.onYield = silent.onYield;
    EXPECT_EQ(refusing.Run(2).code, ResultCode::remoteNotDetected);
    EXPECT_EQ(refusing.polls, 10000);
}

}  // namespace
}  // namespace vento
