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

TEST(LinuxFiles, ReadsEveryByteOfARegularFile) {
    const ScratchFolder folder;
    std::string bytes;
    for (int i = 0; i < 200000; ++i)
        bytes += static_cast<char>(i);
    EXPECT_EQ(LinuxFiles().ReadAll(folder.Write("à.qlb", bytes)), bytes);
    EXPECT_EQ(LinuxFiles().ReadAll(folder.Write("empty", "")), "");
}

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

TEST(LinuxFiles, DeletesRegularFilesOnly) {
    const ScratchFolder folder;
    const std::string file = folder.Write("file", "x");
    const std::string link = (folder / "link").string();
    ASSERT_EQ(::symlink(file.c_str(), link.c_str()), 0);
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    ASSERT_EQ(::mkdir((folder / "folder").c_str(), 0700), 0);
    for (const char* kept : {"folder", "pipe", "link"}) {
        LinuxFiles().Delete((folder / kept).string());
        EXPECT_TRUE(std::filesystem::exists(folder / kept)) << kept;
    }
    LinuxFiles().Delete(file + "\0.qlb"s);
    EXPECT_TRUE(std::filesystem::exists(file));
    LinuxFiles().Delete(file);
    EXPECT_FALSE(std::filesystem::exists(file));
    LinuxFiles().Delete(file);
    LinuxFiles().Delete("");
}

TEST(LinuxFiles, KnowsTheFolderOfTheProgram) {
    EXPECT_TRUE(std::filesystem::exists(LinuxFiles().ProgramFolder() / "platform_linux_test"));
}

std::string Section(const std::string& file, std::size_t size) {
    std::string buffer(size + 1, '#');  // the last one must not be touched
    const std::size_t count = LinuxFiles().ReadSection("message", std::span(buffer).first(size), file);
    EXPECT_EQ(buffer.back(), '#');
    EXPECT_EQ(buffer[count], '\0') << "the NUL behind the last line";
    return buffer.substr(0, count);
}

TEST(LinuxFiles, ReadsASettingsSection) {
    struct Case {
        const char* behaviour;
        std::string file;
        std::string lines;
    };
    const std::vector<Case> cases = {
        {"one line", "[message]\na=b\n", "a=b\0"s},
        {"no line end behind the last line", "[message]\na=b", "a=b\0"s},
        {"name in other letters, line ends of Windows", "[x]\r\nn=0\r\n[Message]\r\na=b\r\nc\r\n",
         "a=b\0c\0"s},
        {"comments, blank lines, blanks around", "[message]\n;no\n\n  \t\n a = b \n ; no\nc;d\n",
         "a = b\0c;d\0"s},
        {"ends at the next section", "[message]\na=b\n [other]\nc=d\n[message]\ne=f\n", "a=b\0"s},
        {"byte order mark", "\xEF\xBB\xBF[message]\na\n", "a\0"s},
        {"empty section", "[message]\n;\n", ""},
        {"no such section", "message\n[messages]\na=b\n[\n[]\n", ""},
        {"head without its bracket", "[message", ""},
        {"empty file", "", ""},
    };
    const ScratchFolder folder;
    for (const Case& c : cases)
        EXPECT_EQ(Section(folder.Write("x.ini", c.file), 500), c.lines) << c.behaviour;
    EXPECT_EQ(Section((folder / "none.ini").string(), 500), "");
    EXPECT_EQ(Section((folder / "").string(), 500), "");
}

TEST(LinuxFiles, CutsOffASectionThatDoesNotFit) {
    const ScratchFolder folder;
    const std::string file = folder.Write("x.ini", "[message]\nab=c\nde=f\n");
    const std::string whole = "ab=c\0de=f\0"s;
    EXPECT_EQ(Section(file, 12), whole);
    EXPECT_EQ(Section(file, 11), whole);
    for (std::size_t size = 2; size < 11; ++size)
        EXPECT_EQ(Section(file, size), whole.substr(0, size - 2)) << size;
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
