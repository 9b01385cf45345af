/// What Linux alone has: a node for the tests of all systems, names in sysfs, the hold, writes that hang,
/// report descriptors, the language in the environment.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/linux/bounded_writer.h"
#include "platform/linux/hidraw_host.h"
#include "platform/linux/report_descriptor.h"
#include "platform/native.h"
#include "platform/native_node.h"
#include "platform/replacement.h"
#include "support/scratch_folder.h"

namespace vento::test {

/// A socket keeps packets apart as a hidraw node keeps reports apart. An input report has no report id there.
NativeNode MakeNativeNode() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends.data()) != 0) {
        throw std::runtime_error("no sockets");
    }
    std::signal(SIGPIPE, SIG_IGN);
    // From now on signals come all the time, without SA_RESTART: the calls of the host come back for them.
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &action, nullptr);
    const itimerval every10Milliseconds{{0, 10'000}, {0, 10'000}};
    ::setitimer(ITIMER_REAL, &every10Milliseconds, nullptr);
    return {ends[0], ends[1]};
}

bool Send(const NativeNode& node, std::size_t count) {
    const std::vector<std::uint8_t> bytes(count, 0xA5);
    return ::write(static_cast<int>(node.device), bytes.data(), count) == static_cast<ssize_t>(count);
}

std::vector<std::uint8_t> Receive(const NativeNode& node) {
    std::vector<std::uint8_t> bytes(100);
    const ssize_t count = ::read(static_cast<int>(node.device), bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

}  // namespace vento::test

namespace vento::platform {
namespace {

namespace fs = std::filesystem;

/// What the kernel shows of its hidraw nodes, in a folder.
class HidrawHostTest : public ::testing::Test {
  protected:
    HidrawHostTest() { fs::create_directory(folder / "dev"); }

    void Add(const std::string& node, const std::string& device) const {
        fs::create_directories(folder / ("class/" + node));
        fs::create_symlink("../../../" + device, folder / ("class/" + node + "/device"));
    }
    static bool IsWanted(HidIdentity each) { return each.vendorId == 0x2B11; }

    const test::ScratchFolder folder;
    HidrawHost host{folder.Path("dev"), folder.Path("class")};
    HidrawHost second{folder.Path("dev"), folder.Path("class")};
};

TEST_F(HidrawHostTest, WalksTheInterfacesByNumberAndOpensNoForeignOne) {
    Add("hidraw10", "0003:2B11:0001.0004");
    Add("hidraw9", "0005:046D:C52B.0003");  // no node of that number: to try it would show as failed
    Add("hidraw2", "0003:2B11:0001.0001");  // its node has gone
    Add("hidraw3", "0003:2B11:00010.1");
    Add("hidraw4", "0003:2B1G:0001.0001");
    for (const char* other : {"hidraw2x", "hidraw", "input3", "hidraw-1", "hidraw99999999999999999999"})
        Add(other, "0003:2B11:0001.0001");
    (void)folder.Write("dev/hidraw10", "");  // it opens, and doesn't know what is asked of it then
    using enum OpenOutcome;
    std::vector<std::tuple<std::string, OpenOutcome, std::optional<HidIdentity>>> found;
    host.Search([&](std::string_view path) {
        const auto answer = host.Open(path, IsWanted);
        found.emplace_back(fs::path(path).filename(), answer.outcome, answer.identity);
        return true;
    });
    const HidIdentity transmitter{0x2B11, 1};
    EXPECT_EQ(found, (decltype(found){{"hidraw2", failed, transmitter},
                                      {"hidraw3", failed, std::nullopt},
                                      {"hidraw4", failed, std::nullopt},
                                      {"hidraw9", foreign, HidIdentity{0x046D, 0xC52B}},
                                      {"hidraw10", failed, transmitter}}));
}

TEST_F(HidrawHostTest, TellsWithoutOpeningWhetherADeviceIsThere) {
    const auto detect = [&] { return host.Detect(IsWanted); };
    using enum Presence;
    EXPECT_EQ(detect(), absent);
    Add("hidraw0", "0003:046D:C52B.0001");
    Add("hidraw1", "0003:2B11:0001.0002");
    EXPECT_EQ(detect(), absent) << "its node has yet to come";
    // Were it opened, this would wait for a writer.
    const std::string node = folder.Path("dev/hidraw1");
    ASSERT_EQ(::mkfifo(node.c_str(), 0600), 0);
    EXPECT_EQ(detect(), ready);
    const int file = ::open(node.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(detect(), ready) << "open somewhere, but not locked";
    ASSERT_EQ(::flock(file, LOCK_EX), 0);
    EXPECT_EQ(detect(), inUse);
    Add("hidraw2", "0003:2B11:0001.0003");
    (void)folder.Write("dev/hidraw2", "");
    EXPECT_EQ(detect(), ready) << "one of two is";
    ::close(file);
    EXPECT_EQ(detect(), ready);
}

TEST_F(HidrawHostTest, LetsGoOfATransmitterAtTheEndOfItsConversationAndNoSooner) {
    Add("hidraw0", "0003:2B11:0001.0001");
    const std::string node = folder.Write("dev/hidraw0", "");
    const auto open = [&](HidrawHost& each) { return each.Open(node, IsWanted).outcome; };
    using enum OpenOutcome;
    auto conversation = host.Converse();
    EXPECT_EQ(host.Converse(), conversation) << "joined";
    EXPECT_EQ(open(second), failed) << "free; a plain file is no device";
    EXPECT_EQ(open(host), failed);
    const auto other = second.Converse();
    EXPECT_EQ(open(second), held);
    conversation.reset();
    EXPECT_EQ(open(second), failed);
    conversation = host.Converse();
    EXPECT_EQ(open(host), held) << "now the second one has it";
}

TEST_F(HidrawHostTest, TakesALongerReportForNone) {
    const test::NativeNode node = test::MakeNativeNode();
    ASSERT_TRUE(test::Send(node, 65));
    Report report{};
    EXPECT_FALSE(host.Read(node.host, report).whole);
    host.Close(node.host);
    host.Close(node.device);
}

TEST(BoundedWriter, LeavesAWriteThatHangsBehindWithWhatIsToBeClosedAfterIt) {
    using Clock = BoundedWriter::SteadyClock;
    using std::chrono_literals::operator""ms;
    using std::chrono_literals::operator""s;
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const auto [reading, writing] = pipe;
    const auto isOpen = [writing = writing] { return ::fcntl(writing, F_GETFD) >= 0; };
    const Report report{0, 1, 2};
    BoundedWriter writer;
    EXPECT_EQ(writer.Write(writing, report, Clock::now() + 20s), 65);
    while (writer.Write(writing, report, Clock::now() + 50ms) == 65) {
    }
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_FALSE(writer.AwaitKernel(Clock::now()));
    EXPECT_EQ(writer.Write(writing, report, Clock::now()), -1) << "one at a time";
    writer.Close(writing);
    EXPECT_TRUE(isOpen()) << "the kernel is still at it";
    std::array<char, 4096> room{};
    EXPECT_GT(::read(reading, room.data(), room.size()), 0);
    EXPECT_TRUE(writer.AwaitKernel(Clock::now() + 20s));
    EXPECT_FALSE(isOpen());
    ::close(reading);
}

TEST(ReportDescriptor, TellsTheSystemsKeyboardsAndMiceAndTheLongestReports) {
    using Bytes = std::vector<std::uint8_t>;
    const Bytes vendor{0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x75, 0x08, 0x95,
                       0x40, 0x09, 0x01, 0x81, 0x02, 0x09, 0x01, 0x91, 0x02, 0xC0};
    const Bytes keyboard{0x05, 0x01, 0x09, 0x06, 0xA1, 0x01, 0x75, 0x01, 0x95, 0x0C, 0x81, 0x02, 0xC0};
    const Bytes mouse{0x0B, 0x02, 0x00, 0x01, 0x00, 0xA1, 0x01, 0xC0};  // its page in the usage itself
    const Bytes joystick{0x05, 0x01, 0x09, 0x04, 0xA1, 0x01, 0x09, 0x01, 0xA1, 0x00, 0xC0, 0xC0};
    const Bytes numbered{0x75, 0x08, 0x85, 0x01, 0x95, 0x03, 0x81, 0x02, 0xA4, 0x85, 0x02,
                         0x95, 0x05, 0x81, 0x02, 0xB4, 0x81, 0x02, 0xFE, 0x01, 0x00, 0x81};
    const auto joined = [](Bytes first, const Bytes& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    };
    struct Case {
        const char* what;
        Bytes bytes;
        bool isSystemInput;
        ReportLengths lengths;
    };
    const std::vector<Case> cases = {
        {"a transmitter", vendor, false, {64, 64}},
        {"a keyboard, its bits rounded up", keyboard, true, {2, 0}},
        {"a mouse", mouse, true, {0, 0}},
        {"a pointer inside another collection", joystick, false, {0, 0}},
        {"a keyboard with a vendor's own collection", joined(keyboard, vendor), false, {66, 64}},
        {"reports with ids, a stack and a long item", numbered, false, {6, 0}},
        {"cut off in an item", Bytes(vendor.begin(), vendor.begin() + 2), false, {0, 0}},
        {"nothing to pop, none to end", {0xB4, 0xC0, 0xFE}, false, {0, 0}},
    };
    for (const Case& each : cases) {
        const ReportDescriptor descriptor = ParseReportDescriptor(each.bytes);
        EXPECT_EQ(descriptor.isSystemInput, each.isSystemInput) << each.what;
        EXPECT_EQ(descriptor.lengths, each.lengths) << each.what;
    }
}

TEST(NativeReplacement, HasThePermissionsFromTheStartAndGoesToTheFileBehindALink) {
    const test::ScratchFolder folder;
    fs::permissions(folder.Write("file", "old"), fs::perms{0600});
    fs::create_symlink("file", folder / "link");
    const auto replacement = ReplaceNatively(folder / "link");
    for (const auto& entry : fs::directory_iterator(folder / ""))
        EXPECT_TRUE(entry.is_symlink() || entry.status().permissions() == fs::perms{0600}) << entry;
    replacement->Write(std::array<std::uint8_t, 1>{'n'});
    replacement->TakePlace();
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(folder.Read("file"), "n");
    EXPECT_EQ(fs::status(folder / "file").permissions(), fs::perms{0600});
    EXPECT_THROW(static_cast<void>(ReplaceNatively("/dev/null")), FileError);
}

TEST(NativeLanguage, IsTheFirstKnownOneOfTheListOrElseTheLocales) {
    // LANGUAGE, LC_ALL, LC_MESSAGES and LANG; an empty one counts as none.
    for (const auto& [list, all, messages, lang, language] :
         std::vector<std::array<const char*, 5>>{{"", "", "", "", "ENG"},
                                                 {"", "", "it_CH", "de_CH.UTF-8", "ITA"},
                                                 {"", "C", "it_IT", "it_IT", "ENG"},
                                                 {"", "", "", "it", "ITA"},
                                                 {"", "", "", "ita_X", "ENG"},
                                                 {"fr:it_CH:en", "", "", "de_DE.UTF-8", "ITA"},
                                                 {"en:it", "", "", "it_IT", "ENG"},
                                                 {"de:fr", "", "", "it_IT", "ENG"},
                                                 {"it", "C.UTF-8", "", "it_IT", "ENG"},
                                                 {"it", "", "", "", "ENG"}}) {
        ::setenv("LANGUAGE", list, 1);
        ::setenv("LC_ALL", all, 1);
        ::setenv("LC_MESSAGES", messages, 1);
        ::setenv("LANG", lang, 1);
        EXPECT_EQ(NativeLanguageAbbreviation(), language) << list << " " << lang;
    }
}

}  // namespace
}  // namespace vento::platform
