/// What Windows alone has: a node for the tests of all systems, its reasons and shares, UTF-16, names of HID
/// interfaces and their locks.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/native_node.h"
#include "platform/windows/files.h"
#include "platform/windows/hid_hold.h"
#include "platform/windows/hid_host.h"
#include "platform/windows/text.h"
#include "support/scratch_folder.h"
#include "text/encoding.h"

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

// An interface of the HID class in the system's list, by the keys of the registry that the list is made of.
class ListedInterface {
  public:
    explicit ListedInterface(const std::wstring& path) {
        Set(kClass, L"DeviceInstance", L"ROOT\\VENTO\\0000");
        Set(std::wstring(kClass) + L"\\#", L"SymbolicLink", path);
        Set(std::wstring(kDevice) + L"\\0000", L"ClassGUID", L"{745a17a0-74d3-11d0-b6fe-00a0c90f57da}");
        constexpr DWORD kLinked = 1;
        const std::wstring control = std::wstring(kClass) + L"\\#\\Control";
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, control.c_str(), L"Linked", REG_DWORD, &kLinked,
                          sizeof kLinked);
    }
    ListedInterface(const ListedInterface&) = delete;
    ListedInterface& operator=(const ListedInterface&) = delete;
    ~ListedInterface() {
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClass);
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kDevice);
    }

  private:
    static constexpr const wchar_t* kClass =
        LR"(System\CurrentControlSet\Control\DeviceClasses\{4d1e55b2-f16f-11cf-88cb-001111000030}\##?#VENTO)";
    static constexpr const wchar_t* kDevice = LR"(System\CurrentControlSet\Enum\ROOT\VENTO)";

    static void Set(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
        const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, value.c_str(), size);
    }
};

TEST(WindowsHidHost, SaysWhyWhatIsListedCannotBeOpened) {
    const test::ScratchFolder folder;
    const std::string path = folder.Path("vid_04d8&pid_0001");
    const auto isTransmitter = [](HidIdentity identity) { return identity.vendorId == 0x04D8; };
    const auto nobody = [](HidIdentity) { return false; };
    WindowsHidHost host;
    const ListedInterface listed(Wide(path));
    const auto expect = [&](OpenOutcome outcome, Presence presence) {
        std::vector<std::string> found;
        host.Search([&](std::string_view each) { return found.emplace_back(each), true; });
        EXPECT_TRUE(std::ranges::any_of(found, [&](const auto& each) { return SameButForCase(each, path); }));
        const OpenAnswer answer = host.Open(path, isTransmitter);
        EXPECT_EQ(answer.outcome, outcome);
        EXPECT_NE(answer.error, 0);
        EXPECT_EQ(answer.identity, (HidIdentity{0x04D8, 1}));
        EXPECT_EQ(host.Detect(isTransmitter), presence);
        EXPECT_EQ(host.Detect(nobody), Presence::absent);
    };
    expect(OpenOutcome::failed, Presence::absent);
    {
        const OwnedHandle another(
            ::CreateFileW(Wide(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        expect(OpenOutcome::busy, Presence::inUse);
    }
    expect(OpenOutcome::failed, Presence::absent);  // it is no HID device
    ::DeleteFileW(Wide(path).c_str());
    ::CreateDirectoryW(Wide(path).c_str(), nullptr);  // which nobody opens as a file
    expect(OpenOutcome::forbidden, Presence::forbidden);
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
