#include <windows.h>

#include <stdexcept>
#include <string>

#include "platform/native_node.h"
#include "platform/windows/owned_handle.h"

namespace vento::test {

/// A pipe of messages keeps them apart as a HID device keeps reports apart. An input report begins with its
/// id.
struct NativeNode::Ends {
    HANDLE host = INVALID_HANDLE_VALUE;
    platform::OwnedHandle device;
};

NativeNode::NativeNode() : ends_(std::make_unique<Ends>()) {
    static int made = 0;
    const std::string name =
        R"(\\.\pipe\vento-)" + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++made);
    constexpr DWORD room = 1024;
    ends_->device = platform::OwnedHandle(::CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX,
                                                             PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1,
                                                             room, room, 0, nullptr));
    ends_->host = ::CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                FILE_FLAG_OVERLAPPED, nullptr);
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (::SetNamedPipeHandleState(ends_->host, &mode, nullptr, nullptr) == 0)
        throw std::runtime_error("no pipe");
}

NativeNode::~NativeNode() = default;

platform::HidHandle NativeNode::HostsEnd() const {
    return reinterpret_cast<platform::HidHandle>(ends_->host);
}

void NativeNode::Send(std::size_t count) {
    std::vector<std::uint8_t> bytes(1 + count, 0xA5);
    bytes[0] = 0;
    DWORD written = 0;
    if (::WriteFile(ends_->device.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ==
        0) {
        throw std::runtime_error("the report was not sent");
    }
}

std::vector<std::uint8_t> NativeNode::Receive() {
    std::vector<std::uint8_t> bytes(100);
    DWORD count = 0;
    static_cast<void>(
        ::ReadFile(ends_->device.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr));
    bytes.resize(count);
    return bytes;
}

void NativeNode::Unplug() {
    ends_->device = platform::OwnedHandle();
}

}  // namespace vento::test
