#include "simulator/faults.h"

#include "simulator/wire.h"

namespace vento::simulator {
namespace {

using platform::OpenOutcome;

TEST(Fault, ChangesItsCycleAndNoOther) {
    struct Case {
        const char* faults;
        const char* step;  ///< how the cycle goes
    };
    const std::vector<Case> cases = {
        {R"({"cycle": 2, "kind": "unplugged"})", "165 /1"},
        {R"({"cycle": 2, "kind": "unplugged", "when": "open"})", "165 /1"},
        {R"({"cycle": 2, "kind": "unplugged", "when": "write"})", "165 /1"},
        {R"({"cycle": 2, "kind": "unplugged", "when": "read"})", "165 /1"},
        {R"({"cycle": 2, "kind": "refused"})", "165 /1"},
        {R"({"cycle": 2, "kind": "writeFails"})", "165 /1"},
        {R"({"cycle": 2, "kind": "writeFails", "report": 2})", "165 = 0 165"},
        {R"({"cycle": 2, "kind": "readFails"})", "165 /1"},
        {R"({"cycle": 2, "kind": "status", "value": 255})", "165 = 255 165"},
        {R"({"cycle": 2, "kind": "status", "value": 7})", "165 /0"},
        {R"({"cycle": 2, "kind": "reply", "bytes": [9, 8, 7]})", "165 /1 = 9 8 7"},
        {R"({"cycle": 2, "kind": "reply", "bytes": [3]})", "165 /0 = 3"},
        {R"({"cycle": 2, "kind": "flip", "byte": 1, "mask": 129})", "165 = 0 36"},
        {R"({"cycle": 2, "kind": "flip", "byte": 0, "mask": 1})", "165 /0"},
        // Whatever their order in the list is, they apply in their own.
        {R"({"cycle": 2, "kind": "reply", "bytes": [0, 1]}, {"cycle": 2, "kind": "status", "value": 7})",
         "165 /1 = 0 1"},
        {R"({"cycle": 2, "kind": "flip", "byte": 0, "mask": 1}, {"cycle": 2, "kind": "status", "value": 7})",
         "165 = 6 165"},
        {R"({"cycle": 2, "kind": "flip", "byte": 63, "mask": 3}, {"cycle": 2, "kind": "flip", "byte": 63, "mask": 3},
            {"cycle": 2, "kind": "flip", "byte": 1, "mask": 3}, {"cycle": 2, "kind": "reply", "bytes": [0, 1]})",
         "165 /0 = 0 2"},
        {R"({"cycle": 2, "kind": "readFails"}, {"cycle": 2, "kind": "reply", "bytes": [0, 165]})", "165 /1"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.faults);
        Wire wire(std::string(R"({"faults": [)") + each.faults + "]}");
        wire.Play(std::string("165 = 0 165;") + each.step + "; 165 = 0 165");
    }
}

TEST(Fault, LastsThroughItsRangeOfSearches) {
    Wire wire(R"({"faults": [{"cycle": 3, "through": 5, "kind": "readFails"}]})");
    wire.host.BeginSearch();
    wire.host.EndSearch();
    wire.Play("165 = 0 165; 165 /1; 165 /1; 165 /1; 165 = 0 165");
}

/// The outcome of every interface that a search comes upon.
std::vector<OpenOutcome> Search(Wire& wire) {
    std::vector<OpenOutcome> outcomes;
    wire.host.BeginSearch();
    while (wire.host.NextInterface()) {
        const auto answer =
            wire.host.OpenInterface([](platform::HidIdentity each) { return each.vendorId != 1; });
        EXPECT_EQ(answer.handle >= 0, answer.outcome == OpenOutcome::opened);
        EXPECT_TRUE(answer.identity);
        wire.host.Close(answer.handle);
        outcomes.push_back(answer.outcome);
    }
    wire.host.EndSearch();
    return outcomes;
}

TEST(Fault, LeavesForeignInterfacesAlone) {
    Wire wire(
        R"({"interfaces": [{"vendorId": 1, "opens": false}, {"opens": false}, {"vendorId": 11025}, {"vendorId": 2}],
                  "faults": [{"cycle": 2, "kind": "unplugged"}, {"cycle": 3, "kind": "refused"}]})");
    using enum OpenOutcome;
    EXPECT_EQ(Search(wire), (std::vector{foreign, forbidden, opened, foreign}));
    EXPECT_EQ(Search(wire), (std::vector{foreign, foreign}));
    EXPECT_EQ(Search(wire), (std::vector{foreign, forbidden, forbidden, foreign}));
    EXPECT_EQ(Search(wire).size(), 4U);
}

TEST(Fault, CutsARunOfReportsWhereItSays) {
    struct Case {
        const char* fault;
        std::size_t written;  ///< of three
        bool read;
    };
    for (const Case& each : {Case{R"("writeFails")", 0, false}, Case{R"("writeFails", "report": 2)", 1, true},
                             Case{R"("unplugged", "when": "write")", 1, false},
                             Case{R"("unplugged", "when": "read")", 3, false}}) {
        SCOPED_TRACE(each.fault);
        Wire wire(std::string(R"({"faults": [{"cycle": 1, "kind": )") + each.fault + "}]}");
        ASSERT_TRUE(wire.Open());
        std::size_t written = 0;
        for (int report = 0; report < 3; ++report)
            written += wire.Write(Step("165 /1").Frame()) ? 1U : 0U;
        EXPECT_EQ(written, each.written);
        EXPECT_EQ(wire.Read().has_value(), each.read);
    }
}

TEST(Fault, KeepsTheTransmitterAwayForATime) {
    for (const std::string when : {"open", "write", "read"}) {
        SCOPED_TRACE(when);
        Wire wire(R"({"reportMicroseconds": 0, "faults": [
                      {"cycle": 1, "kind": "unplugged", "forMilliseconds": 5, "when": ")" +
                  when + "\"}]}");
        wire.Play("165 /1");
        wire.clock.now += std::chrono::microseconds(4999);
        EXPECT_FALSE(wire.Open());
        wire.clock.now += std::chrono::microseconds(1);
        wire.Play("165 = 0 165");
    }
}

TEST(SimulatedHidHost, TakesItsTimeForEachReportThatPasses) {
    Wire wire(R"({"reportMicroseconds": 250, "faults": [{"cycle": 2, "kind": "readFails"},
                  {"cycle": 3, "kind": "writeFails"}, {"cycle": 4, "kind": "unplugged"}]})");
    for (const int reports : {2, 1, 0, 0}) {
        const auto before = wire.clock.now;
        wire.Exchange(Step("165 /1").Frame());
        EXPECT_EQ(wire.clock.now - before, reports * std::chrono::microseconds(250));
    }
}

TEST(SimulatedHidHost, HasNoReportsForADeviceThatIsNotOpen) {
    Wire wire;
    ASSERT_TRUE(wire.Open());
    wire.host.Close(wire.device);
    for (const platform::HidHandle handle : {wire.device, platform::HidHandle{-1}, platform::HidHandle{9}}) {
        wire.device = handle;
        EXPECT_FALSE(wire.Write(Step("165 /1").Frame()));
        EXPECT_EQ(wire.Read(), std::nullopt);
        wire.host.Close(handle);
    }
}

}  // namespace
}  // namespace vento::simulator
