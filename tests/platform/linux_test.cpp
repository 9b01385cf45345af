/// What Linux alone has: names in sysfs, the language in the environment.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/linux/hidraw_host.h"
#include "platform/native.h"
#include "platform/replacement.h"
#include "support/scratch_folder.h"

namespace vento::platform {
namespace {

namespace fs = std::filesystem;

TEST(HidrawHost, WalksTheInterfacesByNumberAndOpensNoForeignOne) {
    const test::ScratchFolder folder;
    const auto add = [&](const std::string& node, const std::string& device) {
        fs::create_directories(folder / ("class/" + node));
        fs::create_symlink("../../../" + device, folder / ("class/" + node + "/device"));
    };
    add("hidraw10", "0003:2B11:0001.0004");
    add("hidraw9", "0005:046D:C52B.0003");  // no node of that number: to try it would show as failed
    add("hidraw2", "0003:2B11:0001.0001");  // its node has gone
    add("hidraw3", "0003:2B11:00010.1");
    for (const char* other : {"hidraw2x", "hidraw", "input3"})
        add(other, "0003:2B11:0001.0001");
    fs::create_directory(folder / "dev");
    (void)folder.Write("dev/hidraw10", "");  // it opens, and doesn't know what is asked of it then
    HidrawHost host((folder / "dev").string(), (folder / "class").string());
    using enum OpenOutcome;
    std::vector<std::tuple<std::string, OpenOutcome, std::optional<HidIdentity>>> found;
    host.Search([&](std::string_view path) {
        const auto answer = host.Open(path, [](HidIdentity each) { return each.vendorId == 0x2B11; });
        found.emplace_back(fs::path(path).filename(), answer.outcome, answer.identity);
        return true;
    });
    const HidIdentity transmitter{0x2B11, 1};
    EXPECT_EQ(found, (decltype(found){{"hidraw2", failed, transmitter},
                                      {"hidraw3", failed, std::nullopt},
                                      {"hidraw9", foreign, HidIdentity{0x046D, 0xC52B}},
                                      {"hidraw10", failed, transmitter}}));
}

TEST(HidrawHost, TellsWithoutOpeningWhetherADeviceIsThere) {
    const test::ScratchFolder folder;
    HidrawHost host((folder / "dev").string(), (folder / "class").string());
    const auto detect = [&] { return host.Detect([](HidIdentity each) { return each.vendorId == 0x2B11; }); };
    const auto add = [&](const std::string& node, const std::string& device) {
        fs::create_directories(folder / ("class/" + node));
        fs::create_directories(folder / "dev");
        fs::create_symlink("../../../" + device, folder / ("class/" + node + "/device"));
    };
    using enum Presence;
    EXPECT_EQ(detect(), absent);
    add("hidraw0", "0003:046D:C52B.0001");
    add("hidraw1", "0003:2B11:0001.0002");
    EXPECT_EQ(detect(), absent) << "its node has yet to come";
    // Were it opened, this would wait for a writer.
    const std::string node = (folder / "dev/hidraw1").string();
    ASSERT_EQ(::mkfifo(node.c_str(), 0600), 0);
    EXPECT_EQ(detect(), ready);
    const int file = ::open(node.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(detect(), ready) << "open somewhere, but not locked";
    ASSERT_EQ(::flock(file, LOCK_EX), 0);
    EXPECT_EQ(detect(), inUse);
    add("hidraw2", "0003:2B11:0001.0003");
    (void)folder.Write("dev/hidraw2", "");
    EXPECT_EQ(detect(), ready) << "one of two is";
    ::close(file);
    EXPECT_EQ(detect(), ready);
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

TEST(NativeLanguage, IsTakenFromTheFirstVariableThatIsSet) {
    // LC_ALL, LC_MESSAGES and LANG; an empty one counts as none.
    for (const auto& [all, messages, lang, language] :
         std::vector<std::array<const char*, 4>>{{"", "", "", "ENG"},
                                                 {"", "it_CH", "de_CH.UTF-8", "ITA"},
                                                 {"C", "it_IT", "it_IT", "ENG"},
                                                 {"", "", "it", "ITA"},
                                                 {"", "", "ita_X", "ENG"}}) {
        ::setenv("LC_ALL", all, 1);
        ::setenv("LC_MESSAGES", messages, 1);
        ::setenv("LANG", lang, 1);
        EXPECT_EQ(NativeLanguageAbbreviation(), language) << lang;
    }
}

}  // namespace
}  // namespace vento::platform
