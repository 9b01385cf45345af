/// What the HID hosts of every system have in common.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "platform/native.h"
#include "platform/native_node.h"

namespace vento::platform {
namespace {

using namespace std::chrono_literals;

class NativeReports : public ::testing::Test {
  protected:
    void TearDown() override { host_->Close(node_.HostsEnd()); }

    [[nodiscard]] bool Read() { return host_->ReadReport(node_.HostsEnd(), report_); }
    [[nodiscard]] bool Write() { return host_->WriteReport(node_.HostsEnd(), report_); }

    std::unique_ptr<HidHost> host_ = MakeNativeHidHost();
    test::NativeNode node_;
    Report report_{7, 8, 9};
};

TEST_F(NativeReports, AreTakenWhole) {
    node_.Send(64);
    ASSERT_TRUE(Read());
    EXPECT_EQ(report_[0], 0);
    EXPECT_TRUE(std::all_of(report_.begin() + 1, report_.end(), [](auto byte) { return byte == 0xA5; }));
}

TEST_F(NativeReports, AreRefusedWhenTheyAreShortAndLeaveTheReportAlone) {
    for (const std::size_t count : {1U, 63U}) {
        node_.Send(count);
        EXPECT_FALSE(Read()) << count;
        EXPECT_EQ(report_, (Report{7, 8, 9}));
    }
    node_.Send(64);
    EXPECT_TRUE(Read()) << "nothing is left of the ones before";
}

TEST_F(NativeReports, GoOutAsSixtyFiveBytesInOne) {
    ASSERT_TRUE(Write());
    EXPECT_TRUE(std::ranges::equal(node_.Receive(), report_));
}

TEST_F(NativeReports, AreStillReadWhenTheDeviceHasGoneBehindThem) {
    node_.Send(64);
    node_.Unplug();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(Read());
    EXPECT_FALSE(Read());
    EXPECT_FALSE(Write());
    EXPECT_LT(std::chrono::steady_clock::now() - start, 900ms) << "nobody waits for a device that has gone";
}

TEST_F(NativeReports, OfASilentDeviceAreGivenOneSecondAndTheNextOneIsNotLost) {
    for (int round = 0; round < 2; ++round) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(Read());
        const auto took = std::chrono::steady_clock::now() - start;
        EXPECT_GE(took, 990ms);
        EXPECT_LT(took, 3s);
        EXPECT_EQ(report_, (Report{7, 8, 9}));
    }
    node_.Send(64);
    EXPECT_TRUE(Read()) << "an earlier read has taken it";
}

TEST_F(NativeReports, AreGivenOneSecondByADeviceThatHasNoRoom) {
    constexpr int moreThanThereIsRoomFor = 100'000;
    auto took = 0ns;
    for (int i = 0; i < moreThanThereIsRoomFor && took == 0ns; ++i) {
        const auto start = std::chrono::steady_clock::now();
        if (!Write()) took = std::chrono::steady_clock::now() - start;
    }
    EXPECT_GE(took, 990ms);
    EXPECT_LT(took, 3s);
    EXPECT_TRUE(std::ranges::equal(node_.Receive(), report_));
    EXPECT_TRUE(Write());
}

TEST(NativeHidHost, GivesAdviceInBothLanguagesWhereItHelps) {
    const auto host = MakeNativeHidHost();
    for (const OpenOutcome outcome : {OpenOutcome::forbidden, OpenOutcome::busy, OpenOutcome::failed}) {
        const std::string italian = host->Advice(outcome, Tongue::italian);
        const std::string english = host->Advice(outcome, Tongue::english);
        EXPECT_NE(italian.find("trasmettitore"), std::string::npos);
        EXPECT_NE(english.find("transmitter"), std::string::npos);
    }
    EXPECT_TRUE(host->Advice(OpenOutcome::foreign, Tongue::english).empty());
}

TEST(NativeClock, GoesForwardAndSleepsAsLongAsItShould) {
    const auto clock = MakeNativeClock();
    const auto start = clock->Now();
    clock->Sleep(-5ms);
    clock->Sleep(0ms);
    EXPECT_LT(clock->Now() - start, 500ms);
    const auto before = clock->Now();
    clock->Sleep(20ms);
    EXPECT_GE(clock->Now() - before, 19ms);
    EXPECT_LT(clock->Now() - before, 2s);
}

}  // namespace
}  // namespace vento::platform
