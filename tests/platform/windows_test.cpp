/// What Windows alone has: its reasons and shares, UTF-16, names of HID interfaces and their locks.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/windows/files.h"
#include "platform/windows/hid_hold.h"
#include "platform/windows/hid_host.h"
#include "platform/windows/text.h"
#include "support/scratch_folder.h"

namespace vento::platform {
namespace {

using namespace std::string_literals;

TEST(WindowsFiles, AreReadWhileTheyAreWrittenOrTheReasonIsTold) {
    const test::ScratchFolder folder;
    std::ofstream writer(folder / "file", std::ios::binary);
    writer << "x" << std::flush;
    EXPECT_EQ(WindowsFiles().ReadAll(folder.Path("file"), 9), "x");
    for (const auto& [path, reason] : {std::pair{folder.Path("none"), "No such file or directory"s},
                                       {folder.Path(""), "Is a directory"s},
                                       {"NUL", "Not a regular file"s}}) {
        try {
            ADD_FAILURE() << path << " was read: " << WindowsFiles().ReadAll(path, 9);
        } catch (const FileError& error) {
            EXPECT_EQ(error.what(), reason);
        }
    }
}

TEST(WindowsText, GoesToUtf16AndBack) {
    const std::string text = "perché \xE6\x97\xA5 \xF0\x9F\x93\xBA";
    EXPECT_EQ(Utf8(Wide(text)), text);
    EXPECT_EQ(Wide(text).size(), 11U);
    EXPECT_EQ(Wide("a\x80z"), L"a\xFFFDz");
    EXPECT_EQ(Utf8(L"a\xD800z"), "a\xEF\xBF\xBDz");
    EXPECT_EQ(::GetACP(), static_cast<UINT>(CP_UTF8)) << "the manifest says so";
}

TEST(HidIdentity, IsReadFromThePathOfAUsbInterface) {
    EXPECT_EQ(
        IdentityInPath(R"(\\?\hid#vid_2b11&pid_0001&mi_00#7&1a#{4d1e55b2-f16f-11cf-88cb-001111000030})"),
        (HidIdentity{0x2B11, 1}));
    for (const char* other : {"", "vid_2b11", "vid_2b1g&pid_0001", "pid_0001&vid_2b1",
                              R"(\\?\hid#{00001812-0000-1000-8000-00805f9b34fb}_dev_vid&02045e_pid&0b13)"}) {
        EXPECT_EQ(IdentityInPath(other), std::nullopt) << other;
    }
    EXPECT_TRUE(IsKeyboardPath(R"(\\?\hid#vid_2b11&pid_0001&mi_00#7&1a#{4d1e55b2}\KBD)"));
    EXPECT_FALSE(IsKeyboardPath("kbd"));
}

TEST(WindowsHidHold, KeepsOneInterfaceFromAllOthersUntilItsEnd) {
    const std::string path = R"(\\?\hid#vid_2b11)" + std::to_string(::GetCurrentProcessId());
    std::string sameInCapitals = path;
    for (char& each : sameInCapitals)
        each = each == 'h' ? 'H' : each;
    {
        WindowsHidHold hold;
        EXPECT_TRUE(hold.Take(path));
        EXPECT_TRUE(hold.Holds(path));
        EXPECT_FALSE(LockInterface(sameInCapitals));
        EXPECT_FALSE(WindowsHidHold().Take(path));
        EXPECT_TRUE(LockInterface(path + "1"));
        EXPECT_TRUE(hold.Take(path + "1"));
        EXPECT_FALSE(hold.Holds(path));
        EXPECT_TRUE(LockInterface(path)) << "it is let go of for the other one";
    }
    EXPECT_TRUE(LockInterface(path + "1"));
}

}  // namespace
}  // namespace vento::platform
