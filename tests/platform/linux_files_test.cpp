#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/linux/files.h"
#include "platform/linux/language.h"
#include "support/scratch_folder.h"

namespace vento::platform {
namespace {

using namespace std::string_literals;
using test::ScratchFolder;

std::string ReasonFor(const std::string& path) {
    try {
        return "read: " + LinuxFiles().ReadAll(path);
    } catch (const FileError& error) {
        return error.what();
    }
}

TEST(LinuxFiles, SaysWhyAFileCannotBeRead) {
    const ScratchFolder folder;
    const std::string pipe = (folder / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(ReasonFor((folder / "none").string()), "No such file or directory");
    EXPECT_EQ(ReasonFor(""), "No such file or directory");
    EXPECT_EQ(ReasonFor((folder / "").string()), "Is a directory");
    EXPECT_EQ(ReasonFor(pipe), "Not a regular file");
    EXPECT_EQ(ReasonFor("/dev/zero"), "Not a regular file");
    EXPECT_EQ(ReasonFor(folder.Write("file", "x") + "\0.qlb"s), "No such file or directory");
}

TEST(LinuxFiles, DeletesNoPipe) {
    const ScratchFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    LinuxFiles().Delete(folder.Path("pipe"));
    EXPECT_TRUE(std::filesystem::exists(folder / "pipe"));
}

TEST(LinuxFiles, KeepsTheBlanksWithinASettingsLine) {
    const ScratchFolder folder;
    const std::string file = folder.Write("x.ini", "[message]\n a = b \nc=d\n");
    std::string buffer(11, '#');  // just enough
    ASSERT_EQ(LinuxFiles().ReadSection("message", buffer, file), 10U);
    EXPECT_EQ(buffer, "a = b\0c=d\0\0"s);
}

TEST(MessageLanguage, IsTakenFromTheFirstVariableThatIsSet) {
    struct Case {
        const char* all;
        const char* messages;
        const char* lang;
        const char* language;
    };
    for (const Case& c : std::vector<Case>{
             {nullptr, nullptr, nullptr, "ENG"},
             {nullptr, nullptr, "it_IT.UTF-8", "ITA"},
             {nullptr, nullptr, "it", "ITA"},
             {"", "", "it@euro", "ITA"},
             {nullptr, "it_CH", "de_CH.UTF-8", "ITA"},
             {"it_IT", "en_GB", "en_GB", "ITA"},
             {"C", "it_IT", "it_IT", "ENG"},
             {nullptr, "en_US.UTF-8", "it_IT.UTF-8", "ENG"},
             {nullptr, nullptr, "ita_X", "ENG"},
             {nullptr, nullptr, "iu_CA", "ENG"},
         }) {
        const auto set = [](const char* name, const char* value) {
            if (value == nullptr) ::unsetenv(name);
            if (value != nullptr) ::setenv(name, value, 1);
        };
        set("LC_ALL", c.all);
        set("LC_MESSAGES", c.messages);
        set("LANG", c.lang);
        EXPECT_EQ(MessageLanguage(), c.language) << (c.lang != nullptr ? c.lang : "no LANG");
    }
}

}  // namespace
}  // namespace vento::platform
