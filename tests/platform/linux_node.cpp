#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

#include "platform/native_node.h"

namespace vento::test {

/// A socket keeps packets apart as a hidraw node keeps reports apart. An input report has no report id there.
NativeNode MakeNativeNode() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends.data()) != 0) {
        throw std::runtime_error("no sockets");
    }
    std::signal(SIGPIPE, SIG_IGN);
    // From now on signals come all the time, without SA_RESTART: the calls of the host come back for them.
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &action, nullptr);
    const itimerval every10Milliseconds{{0, 10'000}, {0, 10'000}};
    ::setitimer(ITIMER_REAL, &every10Milliseconds, nullptr);
    return {ends[0], ends[1]};
}

bool Send(const NativeNode& node, std::size_t count) {
    const std::vector<std::uint8_t> bytes(count, 0xA5);
    return ::write(static_cast<int>(node.device), bytes.data(), count) == static_cast<ssize_t>(count);
}

std::vector<std::uint8_t> Receive(const NativeNode& node) {
    std::vector<std::uint8_t> bytes(100);
    const ssize_t count = ::read(static_cast<int>(node.device), bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

}  // namespace vento::test
