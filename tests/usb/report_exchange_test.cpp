#include "usb/report_exchange.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support/fakes.h"

namespace vento {
namespace {

using platform::OpenOutcome;
using test::Bytes;
using test::ScriptedHidHost;

Bytes Counting(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

struct Ids {
    std::int32_t vendor = -5;
    std::int32_t product = -6;
};

TEST(ReportExchange, CutsFramesIntoReportsAndLeavesTheStaleTail) {
    for (const std::size_t size : {7U, 64U, 65U, 70U, 128U, 200U}) {
        ScriptedHidHost host;
        Ids ids;
        const Bytes frame = Counting(size);
        const Exchange exchange = ExchangeReports(host, ids.vendor, ids.product, frame, false, {});
        EXPECT_TRUE(exchange.transmitterFound && exchange.written) << size;
        ASSERT_EQ(host.reports.size(), (size + 63) / 64) << size;
        Bytes expected(64, 0);
        for (std::size_t r = 0; r < host.reports.size(); ++r) {
            for (std::size_t i = 0; i < 64 && 64 * r + i < size; ++i)
                expected[i] = frame[64 * r + i];
            EXPECT_EQ(host.reports[r][0], 0) << size;
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), host.reports[r].begin() + 1))
                << size << ", report " << r;
        }
        EXPECT_EQ(host.calls.back(), "close");
        EXPECT_EQ(host.calls[host.calls.size() - 2], "cancel");
        EXPECT_EQ(host.openHandles, 0);
    }
}

TEST(ReportExchange, StitchesRepliesOfAnySizeFromWholeReports) {
    for (const std::size_t size : {1U, 9U, 64U, 65U, 256U}) {
        ScriptedHidHost host;
        host.answer = [](const Bytes&) {
            std::deque<Bytes> payloads(5, Bytes(64));
            for (std::size_t i = 0; i < 320U; ++i)
                payloads[i / 64][i % 64] = static_cast<std::uint8_t>(i);
            return payloads;
        };
        Ids ids;
        Bytes reply(size, 0);
        const Exchange exchange = ExchangeReports(host, ids.vendor, ids.product, Counting(7), true, reply);
        EXPECT_EQ(exchange.reportsRead, (size - 1) / 64 + 1);
        for (std::size_t i = 0; i < size; ++i)
            EXPECT_EQ(reply[i], static_cast<std::uint8_t>(i)) << size;
    }
}

TEST(ReportExchange, FailuresEndItAndLeaveZeros) {
    struct Case {
        const char* name;
        void (*arrange)(ScriptedHidHost&);
        bool wantReply;
        bool found;
        bool written;
        std::size_t reportsRead;
        std::size_t reportsWritten;
        std::vector<std::string> calls;
    };
    const std::vector<Case> cases{
        {"unplugged", [](ScriptedHidHost& h) { h.interfaces.clear(); }, true, false, false, 0, 0, {}},
        {"first write fails",
         [](ScriptedHidHost& h) { h.failingWrite = 0; },
         true,
         true,
         false,
         0,
         0,
         {"write", "cancel", "close"}},
        {"second write fails",
         [](ScriptedHidHost& h) { h.failingWrite = 1; },
         true,
         true,
         false,
         0,
         1,
         {"write", "write", "cancel", "close"}},
        {"read fails",
         [](ScriptedHidHost&) {},
         true,
         true,
         true,
         0,
         2,
         {"write", "write", "read", "cancel", "close"}},
        {"second read fails",
         [](ScriptedHidHost& h) { h.answer = [](const Bytes&) { return std::deque<Bytes>{Bytes(64, 9)}; }; },
         true,
         true,
         true,
         1,
         2,
         {"write", "write", "read", "read", "cancel", "close"}},
        {"no reply wanted",
         [](ScriptedHidHost&) {},
         false,
         true,
         true,
         0,
         2,
         {"write", "write", "cancel", "close"}},
    };
    for (const Case& c : cases) {
        ScriptedHidHost host;
        c.arrange(host);
        Ids ids;
        Bytes reply(70, 0);
        const Exchange exchange =
            ExchangeReports(host, ids.vendor, ids.product, Counting(70), c.wantReply, reply);
        EXPECT_EQ(exchange.transmitterFound, c.found) << c.name;
        EXPECT_EQ(exchange.written, c.written) << c.name;
        EXPECT_EQ(exchange.reportsRead, c.reportsRead) << c.name;
        EXPECT_EQ(host.reports.size(), c.reportsWritten) << c.name;
        EXPECT_EQ(host.calls, c.calls) << c.name;
        EXPECT_EQ(host.openHandles, 0) << c.name;
        EXPECT_EQ(std::ranges::count(reply, 9), static_cast<std::ptrdiff_t>(64 * c.reportsRead)) << c.name;
        EXPECT_EQ(std::ranges::count(reply, 0), static_cast<std::ptrdiff_t>(70 - 64 * c.reportsRead))
            << c.name;
    }
}

TEST(TransmitterSearch, TakesTheFirstThatOpensAndSaysWhatWasInTheWay) {
    struct Case {
        std::vector<ScriptedHidHost::Interface> interfaces;
        bool found;
        Ids ids;
        std::optional<OpenOutcome> obstacle;
    };
    const ScriptedHidHost::Interface keyboard{{0x046D, 1}};
    const ScriptedHidHost::Interface first{{1240, 77}};
    const ScriptedHidHost::Interface second{{11025, 3}};
    const auto but = [](ScriptedHidHost::Interface interface, OpenOutcome outcome) {
        interface.outcome = outcome;
        return interface;
    };
    const std::vector<Case> cases{
        {{}, false, {}, {}},
        {{keyboard}, false, {}, {}},
        {{keyboard, second, first}, true, {11025, 3}, {}},
        {{but(first, OpenOutcome::forbidden), second}, true, {11025, 3}, {}},
        {{keyboard, but(first, OpenOutcome::busy), but(second, OpenOutcome::forbidden)},
         false,
         {},
         OpenOutcome::busy},
        {{but(first, OpenOutcome::failed)}, false, {}, OpenOutcome::failed},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        ScriptedHidHost host;
        host.interfaces = cases[i].interfaces;
        Ids ids;
        const TransmitterSearch search = LocateTransmitter(host, ids.vendor, ids.product);
        EXPECT_EQ(search.found, cases[i].found) << i;
        EXPECT_EQ(search.obstacle, cases[i].obstacle) << i;
        EXPECT_EQ(ids.vendor, cases[i].ids.vendor) << i;
        EXPECT_EQ(ids.product, cases[i].ids.product) << i;
        EXPECT_EQ(host.opens, cases[i].found ? 1 : 0) << i;
        EXPECT_EQ(host.openHandles, 0) << i;
    }
}

}  // namespace
}  // namespace vento
