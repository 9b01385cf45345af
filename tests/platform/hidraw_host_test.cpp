#include "platform/linux/hidraw_host.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/file_descriptor.h"
#include "support/scratch_folder.h"

namespace vento::platform {
namespace {

using namespace std::chrono_literals;
using test::ScratchFolder;

bool IsTransmitter(HidIdentity identity) {
    return identity.vendorId == 0x2B11;
}

/// Folders such as the kernel shows, with an interface for each device added.
class FakeKernel {
  public:
    FakeKernel() {
        std::filesystem::create_directory(folder_ / "dev");
        std::filesystem::create_directory(folder_ / "class");
    }
    void Add(const std::string& node, const std::string& device) const {
        std::filesystem::create_directory(folder_ / "class" / node);
        std::filesystem::create_symlink("../../../" + device, folder_ / "class" / node / "device");
    }
    void AddNode(const std::string& node) const { std::ofstream(folder_ / ("dev/" + node)); }
    [[nodiscard]] HidrawHost Host() const {
        return HidrawHost((folder_ / "dev").string(), (folder_ / "class").string());
    }

  private:
    ScratchFolder folder_;
};

struct Found {
    std::string name;
    OpenAnswer answer;
};

std::vector<Found> Search(HidrawHost& host) {
    std::vector<Found> found;
    host.BeginSearch();
    while (host.NextInterface()) {
        const std::string path = host.InterfaceName();
        found.push_back({path.substr(path.find_last_of('/') + 1), host.OpenInterface(IsTransmitter)});
    }
    host.EndSearch();
    return found;
}

TEST(HidrawHost, WalksTheInterfacesByNumberAndOpensNoForeignOne) {
    const FakeKernel kernel;
    kernel.Add("hidraw10", "0003:2B11:0001.0004");
    kernel.Add("hidraw9", "0005:046D:C52B.0003");  // no node of that number: to try it would show as failed
    kernel.Add("hidraw0", "0018:04F3:3087.0001");
    kernel.Add("hidraw2x", "0003:2B11:0001.0005");
    kernel.Add("hidraw", "0003:2B11:0001.0006");
    kernel.Add("hidraw99999", "0003:2B11:0001.0007");
    kernel.Add("input3", "0003:2B11:0001.0008");
    kernel.AddNode("hidraw10");  // a plain file: it opens, and doesn't know what is asked of it then
    HidrawHost host = kernel.Host();
    for (int again = 0; again < 2; ++again) {
        const std::vector<Found> found = Search(host);
        ASSERT_EQ(found.size(), 3U);
        EXPECT_EQ(found[0].name, "hidraw0");
        EXPECT_EQ(found[0].answer.outcome, OpenOutcome::foreign);
        EXPECT_EQ(found[0].answer.identity, (HidIdentity{0x04F3, 0x3087}));
        EXPECT_EQ(found[1].name, "hidraw9");
        EXPECT_EQ(found[1].answer.outcome, OpenOutcome::foreign);
        EXPECT_EQ(found[2].name, "hidraw10");
        EXPECT_EQ(found[2].answer.outcome, OpenOutcome::failed);
        EXPECT_EQ(found[2].answer.identity, (HidIdentity{0x2B11, 1}));
    }
}

TEST(HidrawHost, SeesEachSearchAnew) {
    const FakeKernel kernel;
    HidrawHost host = kernel.Host();
    EXPECT_TRUE(Search(host).empty());
    kernel.Add("hidraw0", "0003:2B11:0001.0001");
    EXPECT_EQ(Search(host).size(), 1U);
    EXPECT_FALSE(host.NextInterface()) << "the search is over";
    HidrawHost nowhere("/nonexistent", "/nonexistent");
    EXPECT_TRUE(Search(nowhere).empty());
}

TEST(HidrawHost, PassesOverADeviceThatIsGoneOrNamedOddly) {
    const FakeKernel kernel;
    kernel.Add("hidraw0", "0003:2B11:0001.0001");  // its node has gone
    int number = 1;
    for (const char* odd : {"0003:2B11:0001", "0003:2B11:0001.", "0003:2B1G:0001.0001", "3:2B11:1.1", "x"}) {
        kernel.Add("hidraw" + std::to_string(number++), odd);
    }
    HidrawHost host = kernel.Host();
    const std::vector<Found> found = Search(host);
    ASSERT_EQ(found.size(), 6U);
    EXPECT_EQ(found[0].answer.identity, (HidIdentity{0x2B11, 1}));
    for (const Found& one : found)
        EXPECT_EQ(one.answer.outcome, OpenOutcome::failed) << one.name;
    EXPECT_EQ(found[4].answer.identity, std::nullopt);
}

/// A socket keeps packets apart as a hidraw node keeps reports apart.
class HidrawReports : public ::testing::Test {
  protected:
    void SetUp() override {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends.data()), 0);
        node_ = ends[0];
        device_ = FileDescriptor(ends[1]);
    }
    void TearDown() override { host_.Close(node_); }

    void Send(std::size_t count) const {
        const std::vector<std::uint8_t> bytes(count, 0xA5);
        ASSERT_EQ(::write(device_.Number(), bytes.data(), count), static_cast<ssize_t>(count));
    }
    [[nodiscard]] bool Read() { return host_.ReadReport(node_, report_); }

    HidrawHost host_;
    HidHandle node_ = -1;
    FileDescriptor device_;
    Report report_{7, 8, 9};
};

TEST_F(HidrawReports, TakesAReportOfExactlySixtyFourBytes) {
    Send(64);
    ASSERT_TRUE(Read());
    EXPECT_EQ(report_[0], 0);
    EXPECT_TRUE(std::all_of(report_.begin() + 1, report_.end(), [](auto byte) { return byte == 0xA5; }));
}

TEST_F(HidrawReports, RefusesEveryOtherLengthAndLeavesTheReportAlone) {
    for (const std::size_t count : {1U, 63U, 65U, 4096U}) {
        Send(count);
        EXPECT_FALSE(Read()) << count;
        EXPECT_EQ(report_, (Report{7, 8, 9}));
    }
    Send(64);
    EXPECT_TRUE(Read()) << "nothing is left of the ones before";
}

TEST_F(HidrawReports, WritesSixtyFiveBytesInOne) {
    ASSERT_TRUE(host_.WriteReport(node_, report_));
    std::array<std::uint8_t, 100> bytes{};
    ASSERT_EQ(::read(device_.Number(), bytes.data(), bytes.size()), 65);
    EXPECT_TRUE(std::equal(report_.begin(), report_.end(), bytes.begin()));
}

TEST_F(HidrawReports, ReadsWhatCameBeforeTheDeviceWent) {
    Send(64);
    device_ = FileDescriptor();
    EXPECT_TRUE(Read());
    EXPECT_FALSE(Read());
    std::signal(SIGPIPE, SIG_IGN);
    EXPECT_FALSE(host_.WriteReport(node_, report_));
}

/// Calls `operation` with a signal every 10 ms; says how long it took.
template <class Operation>
std::chrono::nanoseconds Interrupted(Operation operation) {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // and no SA_RESTART: the calls come back
    ::sigaction(SIGUSR1, &action, nullptr);
    const pthread_t self = ::pthread_self();
    std::jthread pest([self](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            ::pthread_kill(self, SIGUSR1);
            std::this_thread::sleep_for(10ms);
        }
    });
    const auto start = std::chrono::steady_clock::now();
    operation();
    return std::chrono::steady_clock::now() - start;
}

TEST_F(HidrawReports, ASilentDeviceIsGivenOneSecondWhateverSignalsCome) {
    const auto took = Interrupted([this] { EXPECT_FALSE(Read()); });
    EXPECT_GE(took, 1s);
    EXPECT_LT(took, 3s);
}

TEST_F(HidrawReports, ADeviceThatHasNoRoomIsGivenOneSecondToo) {
    while (::write(static_cast<int>(node_), report_.data(), report_.size()) > 0) {
    }
    const auto took = Interrupted([this] { EXPECT_FALSE(host_.WriteReport(node_, report_)); });
    EXPECT_GE(took, 1s);
    EXPECT_LT(took, 3s);
}

TEST(HidrawAdvice, IsGivenInBothLanguagesWhereItHelps) {
    const HidrawHost host;
    for (const Tongue tongue : {Tongue::italian, Tongue::english}) {
        EXPECT_NE(host.Advice(OpenOutcome::forbidden, tongue).find("60-vento.rules"), std::string::npos);
        EXPECT_FALSE(host.Advice(OpenOutcome::busy, tongue).empty());
        EXPECT_FALSE(host.Advice(OpenOutcome::failed, tongue).empty());
        EXPECT_TRUE(host.Advice(OpenOutcome::foreign, tongue).empty());
    }
    EXPECT_NE(host.Advice(OpenOutcome::busy, Tongue::italian),
              host.Advice(OpenOutcome::busy, Tongue::english));
}

}  // namespace
}  // namespace vento::platform
