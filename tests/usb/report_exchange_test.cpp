#include "usb/report_exchange.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support/fakes.h"

namespace vento {
namespace {

using platform::HidIdentity;
using platform::OpenOutcome;
using test::Bytes;

Bytes Counting(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

/// HID interfaces of which one is opened at the most. Keeps what crossed the link.
class ScriptedHidHost : public platform::HidHost {
  public:
    struct Interface {
        HidIdentity identity{1240, 63};
        OpenOutcome outcome = OpenOutcome::opened;
    };
    std::vector<Interface> interfaces = std::vector<Interface>(1);
    std::size_t replies = 0;                  // reports that can be read, each counting from 1
    std::optional<std::size_t> failingWrite;  // from 0
    std::vector<platform::Report> reports;    // all that were written
    std::string calls;  // "o" for an open, "w" write, "r" read, "a" cancel, "c" close, "?" for a wrong handle

    void Search(const std::function<bool(std::string_view path)>& visit) override {
        for (std::size_t i = 0; i < interfaces.size(); ++i) {
            if (!visit(std::to_string(i))) return;
        }
    }
    platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override {
        const auto [identity, outcome] = interfaces.at(std::stoul(std::string(path)));
        if (!wanted(identity)) return {OpenOutcome::foreign, identity};
        if (outcome == OpenOutcome::opened) calls += 'o';
        return {outcome, identity, kHandle};
    }
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override {
        Note('w', device);
        if (failingWrite == reports.size()) return {};
        reports.push_back(report);
        return {.whole = true, .error = 0, .bytes = report.size()};
    }
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override {
        Note('r', device);
        if (replies == 0) return {};
        --replies;
        report.fill(0);
        std::ranges::copy(Counting(platform::kReportPayload), report.begin() + 1);
        return {.whole = true, .error = 0, .bytes = platform::kReportPayload};
    }
    void Cancel(platform::HidHandle device) override { Note('a', device); }
    void Close(platform::HidHandle device) override { Note('c', device); }

  private:
    static constexpr platform::HidHandle kHandle = 7;
    void Note(char call, platform::HidHandle device) { calls += device == kHandle ? call : '?'; }
};

bool IsTransmitter(HidIdentity identity) {
    return identity.vendorId == 1240 || identity.vendorId == 11025;
}

TEST(ReportExchange, CutsFramesIntoReportsThatKeepTheStaleTailAndLeavesZerosWhereItFails) {
    struct Case {
        std::string calls;  // none without a transmitter
        std::size_t size;   // of the frame
        std::optional<std::size_t> failingWrite;
        std::size_t replies;
        std::size_t wanted;  // bytes
        std::size_t reportsRead;
    };
    for (const Case& c :
         {Case{"owac", 7, {}, 9, 0, 0}, Case{"owac", 64, {}, 9, 0, 0}, Case{"owwac", 65, {}, 9, 0, 0},
          Case{"owwac", 128, {}, 9, 0, 0}, Case{"owwwwrac", 200, {}, 9, 1, 1}, Case{"owac", 70, 0, 9, 70, 0},
          Case{"owwac", 70, 1, 9, 70, 0}, Case{"owwrac", 70, {}, 0, 70, 0}, Case{"owwrrac", 70, {}, 1, 70, 1},
          Case{"owwrac", 70, {}, 9, 64, 1}, Case{"owwrrac", 70, {}, 9, 65, 2},
          Case{"owwrrrrac", 70, {}, 9, 256, 4}, Case{"", 7, {}, 9, 70, 0}}) {
        SCOPED_TRACE(c.calls + " " + std::to_string(c.size));
        ScriptedHidHost host;
        if (c.calls.empty()) host.interfaces.clear();
        host.failingWrite = c.failingWrite;
        host.replies = c.replies;
        const Bytes frame = Counting(c.size);
        Bytes reply(c.wanted, 99);
        Link link(host, IsTransmitter);
        link.reportsRead += 5;
        const Exchange& exchange = ExchangeReports(link, frame, reply);
        EXPECT_EQ(&exchange, &link.latest);
        EXPECT_EQ(exchange.transmitterFound, !c.calls.empty());
        EXPECT_EQ(exchange.written, !c.calls.empty() && !c.failingWrite);
        EXPECT_EQ(exchange.reportsRead, c.reportsRead);
        EXPECT_EQ(link.reportsRead, 5 + c.reportsRead);
        EXPECT_EQ(host.calls, c.calls);

        Bytes report(65, 0);
        for (std::size_t i = 0; i < 64 * host.reports.size(); ++i) {
            if (i < c.size) report[1 + i % 64] = frame[i];
            if (i % 64 == 63) {
                EXPECT_TRUE(std::ranges::equal(host.reports[i / 64], report)) << i / 64;
            }
        }
        Bytes expected(c.wanted, 0);
        for (std::size_t i = 0; i < std::min(c.wanted, 64 * c.reportsRead); ++i)
            expected[i] = static_cast<std::uint8_t>(1 + i % 64);
        EXPECT_EQ(reply, expected);
    }
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
        {{{keyboard, failed}, {first, foreign}}, {}, {}},
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
