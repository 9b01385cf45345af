#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/windows/files.h"
#include "platform/windows/hid_identity.h"
#include "platform/windows/language.h"
#include "platform/windows/text.h"
#include "support/scratch_folder.h"

namespace vento::platform {
namespace {

using test::ScratchFolder;

std::string ReasonFor(const std::string& path) {
    try {
        return "read: " + WindowsFiles().ReadAll(path);
    } catch (const FileError& error) {
        return error.what();
    }
}

TEST(WindowsFiles, SaysWhyAFileCannotBeRead) {
    const ScratchFolder folder;
    EXPECT_EQ(ReasonFor(folder.Path("none")), SystemReason(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(ReasonFor(folder.Path("")), SystemReason(ERROR_ACCESS_DENIED));
    EXPECT_EQ(ReasonFor(folder.Path("none") + "/file"), SystemReason(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(ReasonFor("NUL"), "Not a regular file");
    EXPECT_EQ(SystemReason(ERROR_FILE_NOT_FOUND).find_first_of("\r\n"), std::string::npos);
}

TEST(WindowsFiles, LeavesAWriteProtectedFileAlone) {
    const ScratchFolder folder;
    const std::string file = folder.Write("file", "x");
    ::SetFileAttributesW((folder / "file").c_str(), FILE_ATTRIBUTE_READONLY);
    WindowsFiles().Delete(file);
    EXPECT_TRUE(std::filesystem::exists(folder / "file"));
    ::SetFileAttributesW((folder / "file").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(WindowsFiles, ReadAFileThatAnotherProgramIsWriting) {
    const ScratchFolder folder;
    std::ofstream writer(folder / "file", std::ios::binary);
    writer << "x" << std::flush;
    EXPECT_EQ(WindowsFiles().ReadAll(folder.Path("file")), "x");
}

TEST(WindowsText, GoesToUtf16AndBack) {
    const std::string text = "perché \xE6\x97\xA5 \xF0\x9F\x93\xBA";
    EXPECT_EQ(Utf8(Wide(text)), text);
    EXPECT_EQ(Wide(text).size(), 11U);
    EXPECT_EQ(Wide(""), L"");
    EXPECT_EQ(Wide("a\x80z"), L"a\xFFFDz");
    EXPECT_EQ(Utf8(L"a\xD800z"), "a\xEF\xBF\xBDz");
}

TEST(WindowsProgram, HasUtf8ForItsNarrowTexts) {
    EXPECT_EQ(::GetACP(), static_cast<UINT>(CP_UTF8)) << "its manifest says so";
}

TEST(RegionLanguage, IsTheAbbreviationInTheRegistry) {
    constexpr auto kKey = L"Control Panel\\International";
    const auto before = RegionLanguage();
    ASSERT_TRUE(before);
    const auto set = [&](const std::wstring& value) {
        ::RegSetKeyValueW(HKEY_CURRENT_USER, kKey, L"sLanguage", REG_SZ, value.c_str(),
                          static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
        return RegionLanguage();
    };
    EXPECT_EQ(set(L"ITA"), "ITA");
    EXPECT_EQ(set(L""), "");
    EXPECT_EQ(set(std::wstring(100, L'x')), std::nullopt);
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kKey, L"sLanguage");
    EXPECT_EQ(RegionLanguage(), std::nullopt);
    EXPECT_EQ(set(Wide(*before)), before);
}

TEST(HidIdentity, IsReadFromThePathOfAUsbInterface) {
    EXPECT_EQ(
        IdentityInPath(R"(\\?\hid#vid_2b11&pid_0001&mi_00#7&1a#{4d1e55b2-f16f-11cf-88cb-001111000030})"),
        (HidIdentity{0x2B11, 1}));
    EXPECT_EQ(IdentityInPath(R"(\\?\HID#VID_04D8&PID_F2C4#1#2)"), (HidIdentity{0x04D8, 0xF2C4}));
    for (const char* other : {"", "vid_", "vid_2b11", "vid_2b1g&pid_0001", "pid_0001&vid_2b1",
                              R"(\\?\hid#{00001812-0000-1000-8000-00805f9b34fb}_dev_vid&02045e_pid&0b13)"}) {
        EXPECT_EQ(IdentityInPath(other), std::nullopt) << other;
    }
}

}  // namespace
}  // namespace vento::platform
