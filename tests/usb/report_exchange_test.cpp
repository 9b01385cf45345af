#include "usb/report_exchange.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support/fakes.h"

namespace vento {
namespace {

using platform::HidIdentity;
using platform::OpenOutcome;
using test::Bytes;
using test::ScriptedHidHost;

Bytes Counting(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

bool IsTransmitter(HidIdentity identity) {
    return identity.vendorId == 1240 || identity.vendorId == 11025;
}

Exchange Take(ScriptedHidHost& host, const Bytes& frame, std::span<std::uint8_t> reply) {
    Link link(host, IsTransmitter);
    const Exchange exchange = ExchangeReports(link, frame, reply);
    const HidIdentity found = host.interfaces.empty() ? HidIdentity{} : host.interfaces.front().identity;
    EXPECT_EQ(link.vendorId, found.vendorId);
    EXPECT_EQ(link.productId, found.productId);
    EXPECT_EQ(link.reportsRead, exchange.reportsRead);
    return exchange;
}

TEST(ReportExchange, CutsFramesIntoReportsAndLeavesTheStaleTail) {
    for (const std::size_t size : {7U, 64U, 65U, 128U, 200U}) {
        ScriptedHidHost host;
        const Bytes frame = Counting(size);
        EXPECT_TRUE(Take(host, frame, {}).written);
        ASSERT_EQ(host.reports.size(), (size + 63) / 64) << size;
        Bytes expected(65, 0);
        for (std::size_t i = 0; i < size; ++i) {
            expected[1 + i % 64] = frame[i];
            if (i % 64 == 63 || i == size - 1) {
                EXPECT_TRUE(std::ranges::equal(host.reports[i / 64], expected)) << size << ", byte " << i;
            }
        }
    }
}

TEST(ReportExchange, FailuresEndItAndLeaveZeros) {
    struct Case {
        std::optional<std::size_t> failingWrite;
        std::size_t replies;
        std::size_t wanted;  // bytes
        std::string calls;
        std::size_t reportsRead;
    };
    for (const Case& c :
         {Case{0, 9, 70, "owac", 0}, Case{1, 9, 70, "owwac", 0}, Case{{}, 0, 70, "owwrac", 0},
          Case{{}, 1, 70, "owwrrac", 1}, Case{{}, 9, 0, "owwac", 0}, Case{{}, 9, 1, "owwrac", 1},
          Case{{}, 9, 64, "owwrac", 1}, Case{{}, 9, 65, "owwrrac", 2}, Case{{}, 9, 256, "owwrrrrac", 4}}) {
        SCOPED_TRACE(c.calls);
        ScriptedHidHost host;
        host.failingWrite = c.failingWrite;
        host.answer = [&](const Bytes&) { return std::deque<Bytes>(c.replies, Counting(64)); };
        Bytes reply(c.wanted, 99);
        const Exchange exchange = Take(host, Counting(70), reply);
        EXPECT_EQ(exchange.written, !c.failingWrite);
        EXPECT_EQ(exchange.reportsRead, c.reportsRead);
        EXPECT_EQ(host.calls, c.calls);
        Bytes expected(c.wanted, 0);
        for (std::size_t i = 0; i < std::min(c.wanted, 64 * c.reportsRead); ++i)
            expected[i] = static_cast<std::uint8_t>(1 + i % 64);
        EXPECT_EQ(reply, expected);
    }
}

TEST(ReportExchange, WithoutATransmitterNothingIsWritten) {
    ScriptedHidHost host;
    host.interfaces.clear();
    const Exchange exchange = Take(host, Counting(7), {});
    EXPECT_FALSE(exchange.transmitterFound || exchange.written || exchange.reportsRead > 0);
}

TEST(TransmitterSearch, TakesTheFirstThatOpensAndSaysWhatWasInTheWay) {
    struct Case {
        std::vector<ScriptedHidHost::Interface> interfaces;
        std::optional<HidIdentity> found;
        std::optional<OpenOutcome> obstacle;
    };
    using enum OpenOutcome;
    const HidIdentity keyboard{0x046D, 1};
    const HidIdentity first{1240, 77};
    const HidIdentity second{11025, 3};
    const std::vector<Case> cases{
        {{}, {}, {}},
        {{{keyboard, failed}}, {}, {}},
        {{{keyboard}, {second}, {first}}, second, {}},
        {{{first, forbidden}, {second}}, second, {}},
        {{{keyboard}, {first, busy}, {second, forbidden}}, {}, busy},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        ScriptedHidHost host;
        host.interfaces = cases[i].interfaces;
        Link link(host, IsTransmitter);
        link.vendorId = -5;
        link.productId = -6;
        const TransmitterSearch search = LocateTransmitter(link);
        EXPECT_EQ(search.found, cases[i].found.has_value()) << i;
        EXPECT_EQ(search.obstacle, cases[i].obstacle) << i;
        EXPECT_EQ(link.vendorId, search.found ? cases[i].found->vendorId : -5) << i;
        EXPECT_EQ(link.productId, search.found ? cases[i].found->productId : -6) << i;
        EXPECT_EQ(host.calls, search.found ? "oc" : "") << i;
    }
}

}  // namespace
}  // namespace vento
