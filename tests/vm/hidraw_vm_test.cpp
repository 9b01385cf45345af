/// The hidraw back end against HID devices of the kernel. Needs root and /dev/uhid.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/hidraw_host.h"
#include "uhid/uhid_device.h"
#include "usb/gestione_hid.h"
#include "usb/report_exchange.h"

namespace vento::platform {
namespace {

using namespace std::chrono_literals;
using uhid::DeviceEvent;
using uhid::UhidDevice;
using Kind = DeviceEvent::Kind;

constexpr HidIdentity kFirstKind{1240, 83};
constexpr HidIdentity kSecondKind{11025, 1};
constexpr HidIdentity kKeyboard{0x046D, 0xC31C};

template <class Get>
auto WaitFor(Get get) {
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    for (;;) {
        auto got = get();
        if (got || std::chrono::steady_clock::now() > deadline) return got;
        std::this_thread::sleep_for(1ms);
    }
}

std::unique_ptr<UhidDevice> Plug(HidIdentity identity) {
    auto device = std::make_unique<UhidDevice>(identity);
    if (!WaitFor([&] { return device->Node(); })) throw std::runtime_error("no hidraw node came");
    return device;
}

/// What the device hears of next; nothing if it hears of nothing for some seconds.
std::optional<Kind> Hear(UhidDevice& device) {
    const auto event = WaitFor([&] { return device.NextEvent(); });
    return event ? std::optional(event->kind) : std::nullopt;
}

std::size_t OpenDescriptors() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

/// What the search did at the first transmitter, and the device that it opened there.
struct Opened {
    OpenAnswer answer;
    HidDevice device;
};

/// Goes up to the first interface of a transmitter; `asked` is called when it is about to be opened.
Opened OpenFirst(
    HidHost& host, std::function<void()> asked = [] {}) {
    static std::function<void()> whenAsked;
    whenAsked = std::move(asked);
    Opened opened;
    host.BeginSearch();
    while (host.NextInterface()) {
        opened.answer = host.OpenInterface([](HidIdentity identity) {
            if (IsTransmitter(identity)) whenAsked();
            return IsTransmitter(identity);
        });
        if (opened.answer.outcome != OpenOutcome::foreign) break;
    }
    host.EndSearch();
    if (opened.answer.outcome == OpenOutcome::opened) opened.device = HidDevice(host, opened.answer.handle);
    return opened;
}

class HidrawInTheKernel : public ::testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(OpenDescriptors(), descriptors_) << "a descriptor has leaked"; }

    HidrawHost host_;
    Report report_{};

  private:
    std::size_t descriptors_ = OpenDescriptors();
};

TEST_F(HidrawInTheKernel, FindsEitherKindBehindForeignDevicesAndOpensNoneOfThose) {
    const auto keyboard = Plug(kKeyboard);
    const auto mouse = Plug({0x845E, 2});
    std::int32_t vendorId = 0;
    std::int32_t productId = 0;
    EXPECT_FALSE(LocateTransmitter(host_, vendorId, productId).found);
    for (const HidIdentity identity : {kFirstKind, kSecondKind}) {
        const auto transmitter = Plug(identity);
        EXPECT_TRUE(LocateTransmitter(host_, vendorId, productId).found);
        EXPECT_EQ(vendorId, identity.vendorId);
        EXPECT_EQ(productId, identity.productId);
        EXPECT_EQ(Hear(*transmitter), Kind::opened);
        EXPECT_EQ(Hear(*transmitter), Kind::closed);
    }
    EXPECT_FALSE(keyboard->NextEvent()) << "was opened";
    EXPECT_FALSE(mouse->NextEvent()) << "was opened";
}

TEST_F(HidrawInTheKernel, TakesTheLowestNumberOfTwoTransmitters) {
    auto first = Plug(kSecondKind);
    const auto second = Plug(kFirstKind);
    EXPECT_EQ(OpenFirst(host_).answer.identity, kSecondKind);
    first.reset();
    EXPECT_EQ(OpenFirst(host_).answer.identity, kFirstKind);
    first = Plug(kSecondKind);  // it gets its old number
    EXPECT_EQ(OpenFirst(host_).answer.identity, kSecondKind);
}

TEST_F(HidrawInTheKernel, CarriesReportsByteForByteAndStartsEachOpenEmpty) {
    const auto transmitter = Plug(kFirstKind);
    for (std::uint8_t round = 1; round <= 2; ++round) {
        Opened opened = OpenFirst(host_);
        ASSERT_EQ(opened.answer.outcome, OpenOutcome::opened);
        for (std::size_t i = 1; i < report_.size(); ++i)
            report_[i] = static_cast<std::uint8_t>(i * round);
        ASSERT_TRUE(opened.device.Write(report_));
        ASSERT_EQ(Hear(*transmitter), Kind::opened);
        const auto output = WaitFor([&] { return transmitter->NextEvent(); });
        ASSERT_TRUE(output);
        EXPECT_TRUE(std::ranges::equal(output->report, report_));

        const std::vector<std::uint8_t> answer(64, round);
        transmitter->Send(answer);
        transmitter->Send(std::vector<std::uint8_t>(64, 99));  // never read
        Report read{};
        ASSERT_TRUE(opened.device.Read(read));
        EXPECT_TRUE(std::ranges::equal(std::span(read).subspan(1), answer));
        opened.device.Close();
        ASSERT_EQ(Hear(*transmitter), Kind::closed);
    }
}

TEST_F(HidrawInTheKernel, NoticesThatTheTransmitterGoesWhileItIsOpen) {
    auto transmitter = Plug(kFirstKind);
    Opened opened = OpenFirst(host_);
    transmitter->Send(std::vector<std::uint8_t>(64, 1));
    const auto start = std::chrono::steady_clock::now();
    std::jthread puller([&] {
        std::this_thread::sleep_for(100ms);
        transmitter.reset();
    });
    EXPECT_TRUE(opened.device.Read(report_));
    EXPECT_FALSE(opened.device.Read(report_)) << "it went during the read";
    EXPECT_FALSE(opened.device.Read(report_));
    EXPECT_FALSE(opened.device.Write(report_));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms) << "nobody waits for a device that has gone";
}

TEST_F(HidrawInTheKernel, PassesOverATransmitterThatGoesBeforeItIsOpened) {
    auto transmitter = Plug(kFirstKind);
    EXPECT_EQ(OpenFirst(host_, [&] { transmitter.reset(); }).answer.outcome, OpenOutcome::failed);

    transmitter = Plug(kFirstKind);
    host_.BeginSearch();
    transmitter.reset();
    ASSERT_TRUE(host_.NextInterface());
    EXPECT_EQ(host_.OpenInterface(IsTransmitter).outcome, OpenOutcome::failed);
    host_.EndSearch();
}

TEST_F(HidrawInTheKernel, RefusesANumberThatHasGoneToAnotherDevice) {
    auto device = Plug(kFirstKind);
    const auto node = device->Node();
    const Opened opened = OpenFirst(host_, [&] {
        device.reset();
        device = Plug(kKeyboard);
    });
    ASSERT_EQ(device->Node(), node);
    EXPECT_EQ(opened.answer.outcome, OpenOutcome::failed);
}

TEST_F(HidrawInTheKernel, TellsForbiddenFromAbsent) {
    const auto transmitter = Plug(kFirstKind);
    constexpr uid_t nobody = 65534;
    ASSERT_EQ(::seteuid(nobody), 0);
    const Opened opened = OpenFirst(host_);
    std::int32_t vendorId = 0;
    std::int32_t productId = 0;
    const TransmitterSearch search = LocateTransmitter(host_, vendorId, productId);
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(opened.answer.outcome, OpenOutcome::forbidden);
    EXPECT_EQ(opened.answer.identity, kFirstKind);
    EXPECT_FALSE(search.found);
    EXPECT_EQ(search.obstacle, OpenOutcome::forbidden);
    EXPECT_EQ(vendorId, 0);
}

}  // namespace
}  // namespace vento::platform
