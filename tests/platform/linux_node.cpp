#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

#include "platform/linux/file_descriptor.h"
#include "platform/native_node.h"

namespace vento::test {

/// A socket keeps packets apart as a hidraw node keeps reports apart. An input report has no report id there.
struct NativeNode::Ends {
    int host = -1;
    platform::FileDescriptor device;
};

NativeNode::NativeNode() : ends_(std::make_unique<Ends>()) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends.data()) != 0) {
        throw std::runtime_error("no sockets");
    }
    std::signal(SIGPIPE, SIG_IGN);
    ends_->host = ends[0];
    ends_->device = platform::FileDescriptor(ends[1]);
}

NativeNode::~NativeNode() = default;

platform::HidHandle NativeNode::HostsEnd() const {
    return ends_->host;
}

void NativeNode::Send(std::size_t count) {
    const std::vector<std::uint8_t> bytes(count, 0xA5);
    if (::write(ends_->device.Number(), bytes.data(), count) != static_cast<ssize_t>(count)) {
        throw std::runtime_error("the report was not sent");
    }
}

std::vector<std::uint8_t> NativeNode::Receive() {
    std::vector<std::uint8_t> bytes(100);
    const ssize_t count = ::read(ends_->device.Number(), bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

void NativeNode::Unplug() {
    ends_->device = platform::FileDescriptor();
}

}  // namespace vento::test
