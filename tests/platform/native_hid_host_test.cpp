/// What the HID hosts of every system have in common.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include "platform/native.h"
#include "platform/native_node.h"

namespace vento::platform {
namespace {

using namespace std::chrono_literals;

class NativeReports : public ::testing::Test {
  protected:
    void TearDown() override {
        host->Close(node.host);
        host->Close(node.device);
    }

    [[nodiscard]] bool Read() { return host->Read(node.host, report).whole; }
    [[nodiscard]] bool Write() { return host->Write(node.host, report).whole; }

    std::unique_ptr<HidHost> host = MakeNativeHidHost();
    std::unique_ptr<Clock> clock = MakeNativeClock();
    test::NativeNode node = test::MakeNativeNode();
    Report report{7, 8, 9};
};

TEST_F(NativeReports, GoOverWholeOrNotAtAll) {
    for (const std::size_t count : {1U, 63U}) {
        ASSERT_TRUE(test::Send(node, count));
        EXPECT_FALSE(Read()) << count;
        EXPECT_EQ(report, (Report{7, 8, 9}));
    }
    ASSERT_TRUE(Write());
    EXPECT_TRUE(std::ranges::equal(test::Receive(node), report)) << "sixty-five bytes in one";
    ASSERT_TRUE(test::Send(node, 64));
    ASSERT_TRUE(Read()) << "nothing is left of the ones before";
    Report whole;
    whole.fill(0xA5);
    whole[0] = 0;
    EXPECT_EQ(report, whole);
}

TEST_F(NativeReports, AreStillReadWhenTheDeviceHasGoneBehindThem) {
    ASSERT_TRUE(test::Send(node, 64));
    host->Close(std::exchange(node.device, -1));
    const auto start = clock->Now();
    EXPECT_TRUE(Read());
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(Read() || Write());
    EXPECT_LT(clock->Now() - start, 10s) << "nobody waits for a device that has gone";
}

TEST_F(NativeReports, AreGivenOneSecondAndTheNextOneIsNotLost) {
    auto start = clock->Now();
    EXPECT_FALSE(Read());
    EXPECT_GE(clock->Now() - start, 990ms);
    EXPECT_LT(clock->Now() - start, 10s);
    ASSERT_TRUE(test::Send(node, 64));
    EXPECT_TRUE(Read()) << "an earlier read has taken it";
    do {
        start = clock->Now();
    } while (Write());  // until there is no room any more
    EXPECT_GE(clock->Now() - start, 990ms);
    EXPECT_LT(clock->Now() - start, 10s);
    EXPECT_TRUE(std::ranges::equal(test::Receive(node), report));
    EXPECT_TRUE(Write());
}

}  // namespace
}  // namespace vento::platform
