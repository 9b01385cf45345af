/// What the files of every system have in common.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/native.h"
#include "platform/replacement.h"
#include "support/scratch_folder.h"

namespace vento::platform {
namespace {

using namespace std::string_literals;

TEST(NativeFiles, ReadsEveryByteOfARegularFileAndNothingElse) {
    const test::ScratchFolder folder;
    const auto files = MakeNativeFiles();
    std::string bytes;
    for (int i = 0; i < 200000; ++i)
        bytes += static_cast<char>(i);
    const std::string file = folder.Write("perché 日本.qlb", bytes);
    EXPECT_EQ(files->ReadAll(file, bytes.size()), bytes);
    EXPECT_THROW(static_cast<void>(files->ReadAll(file, bytes.size() - 1)), FileTooLarge);
    for (const auto& path :
         {folder.Path("none"), ""s, folder.Path(""), folder.Write("empty", "") + "\0.qlb"s})
        EXPECT_THROW(static_cast<void>(files->ReadAll(path, 9)), FileError) << path;
}

TEST(NativeFiles, DeletesRegularFilesThatMayBeWrittenOnly) {
    const test::ScratchFolder folder;
    const auto files = MakeNativeFiles();
    const std::string file = folder.Write("perché.qlb", "x");
    std::filesystem::create_directory(folder / "folder");
    for (const std::string& kept : {folder.Path("folder"), file + "\0.qlb"s, ""s})
        files->Delete(kept);
    EXPECT_TRUE(std::filesystem::exists(folder / "folder"));
    std::filesystem::permissions(folder / "perché.qlb", std::filesystem::perms::owner_read);
    files->Delete(file);
    EXPECT_TRUE(std::filesystem::exists(folder / "perché.qlb"));
    std::filesystem::permissions(folder / "perché.qlb", std::filesystem::perms::owner_write);
    files->Delete(file);
    EXPECT_FALSE(std::filesystem::exists(folder / "perché.qlb"));
}

TEST(NativeReplacement, TakesThePlaceOfARegularFileAloneAndLeavesNothingElse) {
    const test::ScratchFolder folder;
    const auto replace = [](const std::filesystem::path& target, bool takePlace) {
        const auto replacement = ReplaceNatively(target);
        const std::vector<std::uint8_t> bytes(100'000, 'n');
        replacement->Write(bytes);
        replacement->Write(bytes);
        if (takePlace) replacement->TakePlace();
    };
    const std::string longest(255, 'x');  // as long as a name may be
    for (const std::string& name : {"perché"s, longest, "new"s}) {
        if (name != "new") static_cast<void>(folder.Write(name, "old"));
        replace(folder / name, false);
        EXPECT_EQ(std::filesystem::exists(folder / name), name != "new");
        replace(folder / name, true);
        EXPECT_EQ(folder.Read(name), std::string(200'000, 'n'));
    }
    std::filesystem::create_directory(folder / "folder");
    for (const auto& [name, reason] : {std::pair{"folder", "Is a directory"},
                                       {"none/new", "No such file or directory"},
                                       {"perché/new", "Not a directory"}}) {
        try {
            replace(folder / name, true);
            ADD_FAILURE() << name;
        } catch (const FileError& error) {
            const std::string_view told = error.what();
            // Windows tells a file in the place of a folder from no such file in its own way.
            EXPECT_TRUE(told == reason || told == "No such file or directory") << name << ": " << told;
            EXPECT_NE(error.Reason().In(Language::italian), told);
        }
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / ""), {}), 4);
}

TEST(NativeFiles, ReadsASettingsSectionAsFarAsItFits) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"[x]\r\nn=0\r\n[Message]\r\na=b\r\nc\r\n", "a=b\0c\0"s},
        {"[message]\n;no\n\n  \t\n a=b \n ; no\nc;d\n", "a=b\0c;d\0"s},
        {"[message]\na=b\n [other]\nc=d\n[message]\ne=f\n", "a=b\0"s},
        {"\xEF\xBB\xBF[message]\na\n", "a\0"s},
        {"message\n[messages]\na=b\n[\n[]\n[message", ""},
    };
    const test::ScratchFolder folder;
    const auto files = MakeNativeFiles();
    const auto read = [&](std::size_t size) {
        std::string buffer(size + 1, '#');  // the last one must not be touched
        const auto count =
            files->ReadSection("message", std::span(buffer).first(size), folder / "perché.ini");
        EXPECT_EQ(buffer.back(), '#');
        return buffer.substr(0, count + 1);
    };
    EXPECT_EQ(read(500), "\0"s) << "no file";
    for (const auto& [text, lines] : cases) {
        static_cast<void>(folder.Write("perché.ini", text));
        EXPECT_EQ(read(500), lines + '\0') << text;
    }
    const std::string whole = "ab=c\0de=f\0"s;
    static_cast<void>(folder.Write("perché.ini", "[message]\nab=c\nde=f\n"));
    EXPECT_EQ(read(12), whole + '\0');
    for (std::size_t size = 2; size < 11; ++size)
        EXPECT_EQ(read(size), whole.substr(0, size - 2) + '\0') << size;
}

}  // namespace
}  // namespace vento::platform
