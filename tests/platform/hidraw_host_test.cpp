#include "platform/linux/hidraw_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/native_node.h"
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

TEST(HidrawReports, LongerThanTheyShouldBeAreRefusedAndLost) {
    test::NativeNode node;
    HidrawHost host;
    Report report{7, 8, 9};
    for (const std::size_t count : {65U, 4096U}) {
        node.Send(count);
        EXPECT_FALSE(host.ReadReport(node.HostsEnd(), report)) << count;
        EXPECT_EQ(report, (Report{7, 8, 9}));
    }
    node.Send(64);
    EXPECT_TRUE(host.ReadReport(node.HostsEnd(), report)) << "nothing is left of the ones before";
    host.Close(node.HostsEnd());
}

/// Sends this thread a signal every 10 ms for as long as it lives.
std::jthread Pest() {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // and no SA_RESTART: the calls come back
    ::sigaction(SIGUSR1, &action, nullptr);
    const pthread_t self = ::pthread_self();
    return std::jthread([self](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            ::pthread_kill(self, SIGUSR1);
            std::this_thread::sleep_for(10ms);
        }
    });
}

TEST(HidrawReports, AreWaitedForOneSecondWhateverSignalsCome) {
    const test::NativeNode node;
    HidrawHost host;
    Report report{};
    const auto start = std::chrono::steady_clock::now();
    {
        const std::jthread pest = Pest();
        EXPECT_FALSE(host.ReadReport(node.HostsEnd(), report));
        while (host.WriteReport(node.HostsEnd(), report)) {
        }
    }
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, 2s);
    EXPECT_LT(took, 5s);
    host.Close(node.HostsEnd());
}

TEST(HidrawAdvice, NamesTheRuleThatGivesPermission) {
    for (const Tongue tongue : {Tongue::italian, Tongue::english}) {
        EXPECT_NE(HidrawHost().Advice(OpenOutcome::forbidden, tongue).find("60-vento.rules"),
                  std::string::npos);
    }
}

}  // namespace
}  // namespace vento::platform
