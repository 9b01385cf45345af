#include "simulator/faults.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

using platform::OpenOutcome;

Fault In(std::uint32_t cycle, FaultKind kind) {
    return {.cycle = cycle, .through = cycle, .kind = std::move(kind)};
}

fault::Reply ReplyOf(const Bytes& bytes) {
    fault::Reply reply;
    std::ranges::copy(bytes, reply.payload.begin());
    return reply;
}

struct AlteredPoll {
    std::string name;
    std::vector<FaultKind> kinds;  ///< all in cycle 2
    std::optional<Bytes> reply;    ///< of that cycle's poll
    std::uint8_t replyCount = 1;

    friend void PrintTo(const AlteredPoll& each, std::ostream* out) { *out << each.name; }
};

class FaultInOneCycle : public testing::TestWithParam<AlteredPoll> {};

TEST_P(FaultInOneCycle, ChangesThatCycleAndNoOther) {
    Scenario scenario;
    for (const FaultKind& kind : GetParam().kinds)
        scenario.faults.push_back(In(2, kind));
    Wire wire(scenario);
    std::optional<Bytes> expected;
    if (GetParam().reply) expected = Padded(*GetParam().reply);
    EXPECT_EQ(wire.Exchange(RemoteFrame({165}, 1)), Padded({0, 165}));
    EXPECT_EQ(wire.Exchange(RemoteFrame({165}, GetParam().replyCount)), expected);
    EXPECT_EQ(wire.Exchange(RemoteFrame({165}, 1)), Padded({0, 165}));
}

INSTANTIATE_TEST_SUITE_P(
    Each, FaultInOneCycle,
    testing::Values(
        AlteredPoll{"Unplugged", {fault::Unplugged{}}, std::nullopt},
        AlteredPoll{"UnpluggedBeforeTheReply", {fault::Unplugged{.when = UnplugMoment::read}}, std::nullopt},
        AlteredPoll{"Refused", {fault::Refused{}}, std::nullopt},
        AlteredPoll{"WriteFails", {fault::WriteFails{}}, std::nullopt},
        AlteredPoll{"WriteFailsBehindTheLastReport", {fault::WriteFails{.report = 2}}, Bytes{0, 165}},
        AlteredPoll{"ReadFails", {fault::ReadFails{}}, std::nullopt},
        AlteredPoll{"Status", {fault::Status{7}}, Bytes{7, 165}},
        AlteredPoll{"Reply", {ReplyOf({9, 8, 7, 6})}, Bytes{9, 8, 7, 6}},
        AlteredPoll{"Flip", {fault::Flip{.byte = 1, .mask = 0x81}}, Bytes{0, 0x24}},
        AlteredPoll{"FlipOfTheLastByte",
                    {fault::Flip{.byte = 63, .mask = 1}},
                    [] {
                        Bytes reply(64);
                        reply[1] = 165;
                        reply[63] = 1;
                        return reply;
                    }()},
        AlteredPoll{"StatusWithoutAReport", {fault::Status{7}}, std::nullopt, 0},
        AlteredPoll{"FlipWithoutAReport", {fault::Flip{.byte = 0, .mask = 1}}, std::nullopt, 0},
        AlteredPoll{"ReplyWithoutAReport", {ReplyOf({3})}, Bytes{3}, 0}),
    [](const auto& each) { return each.param.name; });

INSTANTIATE_TEST_SUITE_P(
    InTheirOrder, FaultInOneCycle,
    testing::Values(
        AlteredPoll{"ReplyOverStatus", {ReplyOf({0, 1}), fault::Status{7}}, Bytes{0, 1}},
        AlteredPoll{"FlipOverStatus", {fault::Flip{.byte = 0, .mask = 1}, fault::Status{7}}, Bytes{6, 165}},
        AlteredPoll{"FlipOverReply", {fault::Flip{.byte = 1, .mask = 3}, ReplyOf({0, 1})}, Bytes{0, 2}, 0},
        AlteredPoll{"ReadFailsOverReply", {fault::ReadFails{}, ReplyOf({0, 165})}, std::nullopt}),
    [](const auto& each) { return each.param.name; });

TEST(Faults, LastThroughAllCyclesOfTheirRange) {
    Scenario scenario;
    scenario.faults = {{.cycle = 2, .through = 4, .kind = fault::ReadFails{}}};
    Wire wire(scenario);
    for (int cycle = 1; cycle <= 5; ++cycle) {
        EXPECT_EQ(wire.Exchange(RemoteFrame({165}, 1)).has_value(), cycle == 1 || cycle == 5) << cycle;
    }
}

TEST(Faults, CountEachSearchWhetherAnythingIsOpenedOrNot) {
    Scenario scenario;
    scenario.faults = {In(3, fault::ReadFails{})};
    Wire wire(scenario);
    wire.host.BeginSearch();
    wire.host.EndSearch();
    EXPECT_TRUE(wire.Exchange(RemoteFrame({165}, 1)));
    EXPECT_FALSE(wire.Exchange(RemoteFrame({165}, 1)));
}

/// The outcome of every interface that a search comes upon.
std::vector<OpenOutcome> Search(Wire& wire) {
    std::vector<OpenOutcome> outcomes;
    wire.host.BeginSearch();
    while (wire.host.NextInterface()) {
        const auto wanted = [](platform::HidIdentity each) { return each.vendorId != 1; };
        const platform::OpenAnswer answer = wire.host.OpenInterface(wanted);
        EXPECT_EQ(answer.handle >= 0, answer.outcome == OpenOutcome::opened);
        wire.host.Close(answer.handle);
        outcomes.push_back(answer.outcome);
    }
    wire.host.EndSearch();
    return outcomes;
}

TEST(Faults, OfPresenceLeaveForeignInterfacesAlone) {
    Scenario scenario;
    scenario.interfaces = {
        {.vendorId = 1, .opens = false}, {.opens = false}, {.vendorId = 11025}, {.vendorId = 2}};
    scenario.faults = {In(2, fault::Unplugged{}), In(3, fault::Refused{})};
    Wire wire(scenario);
    using enum OpenOutcome;
    EXPECT_EQ(Search(wire), (std::vector{foreign, forbidden, opened, foreign}));
    EXPECT_EQ(Search(wire), (std::vector{foreign, foreign}));
    EXPECT_EQ(Search(wire), (std::vector{foreign, forbidden, forbidden, foreign}));
    EXPECT_EQ(Search(wire).size(), 4U);
}

TEST(Faults, InTheMiddleOfAFrameCutItThere) {
    struct Case {
        FaultKind kind;
        std::size_t written;
    };
    const std::vector<Case> cases = {{fault::WriteFails{.report = 1}, 0},
                                     {fault::WriteFails{.report = 2}, 1},
                                     {fault::Unplugged{.when = UnplugMoment::write}, 1},
                                     {fault::Unplugged{.when = UnplugMoment::read}, 3}};
    for (const Case& each : cases) {
        Scenario scenario;
        scenario.faults = {In(1, each.kind)};
        Wire wire(scenario);
        ASSERT_TRUE(wire.Open());
        std::size_t written = 0;
        for (int report = 0; report < 3; ++report)
            written += wire.Write(RemoteFrame({165}, 1)) ? 1U : 0U;
        EXPECT_EQ(written, each.written) << each.kind.index();
        EXPECT_EQ(wire.Read().has_value(), each.kind.index() == 2 && each.written == 1) << each.kind.index();
    }
}

TEST(Faults, KeepTheTransmitterAwayForATime) {
    for (const UnplugMoment moment : {UnplugMoment::open, UnplugMoment::write, UnplugMoment::read}) {
        Scenario scenario;
        scenario.perReport = {};
        scenario.faults = {In(1, fault::Unplugged{.when = moment, .absence = std::chrono::milliseconds(5)})};
        Wire wire(scenario);
        EXPECT_EQ(wire.Exchange(RemoteFrame({165}, 1)), std::nullopt);
        wire.clock.now += std::chrono::microseconds(4999);
        EXPECT_FALSE(wire.Open());
        wire.clock.now += std::chrono::microseconds(1);
        EXPECT_EQ(wire.Exchange(RemoteFrame({165}, 1)), Padded({0, 165}));
    }
}

TEST(SimulatedHidHost, TakesItsTimeForEachReportThatPasses) {
    Scenario scenario;
    scenario.perReport = std::chrono::microseconds(250);
    scenario.faults = {In(2, fault::ReadFails{}), In(3, fault::WriteFails{}), In(4, fault::Unplugged{})};
    Wire wire(scenario);
    std::vector<std::int64_t> reports;
    for (int cycle = 1; cycle <= 4; ++cycle) {
        const auto before = wire.clock.now;
        wire.Exchange(RemoteFrame({165}, 1));
        reports.push_back((wire.clock.now - before) / scenario.perReport);
    }
    EXPECT_EQ(reports, (std::vector<std::int64_t>{2, 1, 0, 0}));
}

TEST(SimulatedHidHost, HasNoReportsForADeviceThatIsNotOpen) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    wire.host.Close(wire.device);
    wire.host.Close(wire.device);
    for (const platform::HidHandle handle : {wire.device, platform::HidHandle{-1}, platform::HidHandle{9}}) {
        wire.device = handle;
        EXPECT_FALSE(wire.Write({}));
        EXPECT_EQ(wire.Read(), std::nullopt);
    }
}

TEST(SimulatedHidHost, SaysInBothLanguagesThatTheScenarioForbids) {
    const Wire wire;
    EXPECT_NE(wire.host.Advice(OpenOutcome::forbidden, platform::Tongue::italian).find("vieta"),
              std::string::npos);
    EXPECT_NE(wire.host.Advice(OpenOutcome::forbidden, platform::Tongue::english).find("not let"),
              std::string::npos);
}

}  // namespace
}  // namespace vento::simulator
