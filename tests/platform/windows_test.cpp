/// What Windows alone has: a node for the tests of all systems, its reasons and shares, UTF-16, names of HID
/// interfaces and their locks.
#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>
#include <string>

#include "platform/native_node.h"
#include "platform/windows/files.h"
#include "platform/windows/hid_hold.h"
#include "platform/windows/hid_host.h"
#include "platform/windows/text.h"
#include "support/scratch_folder.h"

namespace vento::test {

/// A pipe of messages keeps them apart as a HID device keeps reports apart. An input report begins with its
/// id.
NativeNode MakeNativeNode() {
    static int made = 0;
    const std::string name =
        R"(\\.\pipe\vento-)" + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++made);
    constexpr DWORD kRoom = 1024;
    HANDLE const device =
        ::CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1,
                           kRoom, kRoom, 0, nullptr);
    HANDLE const host = ::CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_OVERLAPPED, nullptr);
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (::SetNamedPipeHandleState(host, &mode, nullptr, nullptr) == 0) throw std::runtime_error("no pipe");
    return {reinterpret_cast<platform::HidHandle>(host), reinterpret_cast<platform::HidHandle>(device)};
}

bool Send(const NativeNode& node, std::size_t count) {
    std::vector<std::uint8_t> bytes(1 + count, 0xA5);
    bytes[0] = 0;
    DWORD written = 0;
    return ::WriteFile(reinterpret_cast<HANDLE>(node.device), bytes.data(), static_cast<DWORD>(bytes.size()),
                       &written, nullptr) != 0;
}

std::vector<std::uint8_t> Receive(const NativeNode& node) {
    std::vector<std::uint8_t> bytes(100);
    DWORD count = 0;
    static_cast<void>(::ReadFile(reinterpret_cast<HANDLE>(node.device), bytes.data(),
                                 static_cast<DWORD>(bytes.size()), &count, nullptr));
    bytes.resize(count);
    return bytes;
}

}  // namespace vento::test

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
