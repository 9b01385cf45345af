#include <windows.h>

#include <stdexcept>
#include <string>

#include "platform/native_node.h"

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
