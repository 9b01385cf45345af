/// What the files of every system have in common.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/native.h"
#include "support/scratch_folder.h"

namespace vento::platform {
namespace {

using namespace std::string_literals;
using test::ScratchFolder;

TEST(NativeFiles, ReadsEveryByteOfARegularFile) {
    const ScratchFolder folder;
    std::string bytes;
    for (int i = 0; i < 200000; ++i)
        bytes += static_cast<char>(i);
    EXPECT_EQ(MakeNativeFiles()->ReadAll(folder.Write("perché 日本.qlb", bytes)), bytes);
    EXPECT_EQ(MakeNativeFiles()->ReadAll(folder.Write("empty", "")), "");
}

TEST(NativeFiles, SaysWhyAFileCannotBeRead) {
    const ScratchFolder folder;
    for (const std::string& path :
         {folder.Path("none"), ""s, folder.Path(""), folder.Write("file", "x") + "\0.qlb"s}) {
        try {
            ADD_FAILURE() << path << " was read: " << MakeNativeFiles()->ReadAll(path);
        } catch (const FileError& error) {
            EXPECT_GT(std::string(error.what()).size(), 5U) << path;
        }
    }
}

TEST(NativeFiles, DeletesRegularFilesOnly) {
    const ScratchFolder folder;
    const auto files = MakeNativeFiles();
    const std::string file = folder.Write("perché.qlb", "x");
    std::filesystem::create_directory(folder / "folder");
    std::error_code unable;  // not everybody may make links everywhere
    std::filesystem::create_symlink(folder / "perché.qlb", folder / "link", unable);
    for (const std::string& kept : {folder.Path("folder"), folder.Path("link"), file + "\0.qlb"s, ""s})
        files->Delete(kept);
    EXPECT_TRUE(std::filesystem::exists(folder / "folder"));
    EXPECT_TRUE(unable || std::filesystem::is_symlink(folder / "link"));
    EXPECT_TRUE(std::filesystem::exists(folder / "perché.qlb"));
    files->Delete(file);
    EXPECT_FALSE(std::filesystem::exists(folder / "perché.qlb"));
    files->Delete(file);
}

TEST(NativeFiles, KnowsTheFolderOfTheProgram) {
    const std::filesystem::path folder = MakeNativeFiles()->ProgramFolder();
    EXPECT_TRUE(std::filesystem::exists(folder / "platform_native_test") ||
                std::filesystem::exists(folder / "platform_native_test.exe"));
}

std::string Section(const std::filesystem::path& file, std::size_t size) {
    std::string buffer(size + 1, '#');  // the last one must not be touched
    const std::size_t count = MakeNativeFiles()->ReadSection("message", std::span(buffer).first(size), file);
    EXPECT_EQ(buffer.back(), '#');
    EXPECT_EQ(buffer[count], '\0') << "the NUL behind the last line";
    return buffer.substr(0, count);
}

TEST(NativeFiles, ReadsASettingsSection) {
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
        {"comments, blank lines, blanks around", "[message]\n;no\n\n  \t\n a=b \n ; no\nc;d\n",
         "a=b\0c;d\0"s},
        {"ends at the next section", "[message]\na=b\n [other]\nc=d\n[message]\ne=f\n", "a=b\0"s},
        {"byte order mark", "\xEF\xBB\xBF[message]\na\n", "a\0"s},
        {"empty section", "[message]\n;\n", ""},
        {"no such section", "message\n[messages]\na=b\n[\n[]\n", ""},
        {"head without its bracket", "[message", ""},
        {"empty file", "", ""},
    };
    const ScratchFolder folder;
    int number = 0;
    for (const Case& c : cases) {
        const std::string name = "perché" + std::to_string(++number) + ".ini";
        static_cast<void>(folder.Write(name, c.file));
        EXPECT_EQ(Section(folder / name, 500), c.lines) << c.behaviour;
    }
    EXPECT_EQ(Section(folder / "none.ini", 500), "");
    EXPECT_EQ(Section(folder / "", 500), "");
}

TEST(NativeFiles, CutsOffASectionThatDoesNotFit) {
    const ScratchFolder folder;
    const std::string whole = "ab=c\0de=f\0"s;
    static_cast<void>(folder.Write("short.ini", "[message]\nab=c\nde=f\n"));
    EXPECT_EQ(Section(folder / "short.ini", 12), whole);
    for (std::size_t size = 2; size < 11; ++size)
        EXPECT_EQ(Section(folder / "short.ini", size), whole.substr(0, size - 2)) << size;

    // Of what fills a buffer but for two characters nobody can tell whether it is all. The panel's first
    // buffer:
    for (const std::size_t count : {497U, 498U, 499U, 1000U}) {
        const std::string line = "k=" + std::string(count - 3, 'v');
        const std::string name = std::to_string(count) + ".ini";
        static_cast<void>(folder.Write(name, "[message]\n" + line + "\n"));
        const std::string read = Section(folder / name, 500);
        EXPECT_EQ(read.substr(0, 498), (line + '\0').substr(0, 498)) << count;
        EXPECT_EQ(read.size() >= 498, count >= 498) << count;
    }
}

}  // namespace
}  // namespace vento::platform
