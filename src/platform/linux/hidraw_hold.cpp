#include "platform/linux/hidraw_hold.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace vento::platform {

FileDescriptor OpenNode(const char* path) {
    for (;;) {
        FileDescriptor node(::open(path, O_RDWR | O_CLOEXEC | O_NONBLOCK));
        if (node.IsOpen() || errno != EINTR) return node;
    }
}

int TryToLock(const FileDescriptor& node, int operation) {
    return ::flock(node.Number(), operation | LOCK_NB) == 0 ? 0 : errno;
}

bool HidrawHold::Holds(std::string_view path) const {
    if (!node_.IsOpen() || path != path_) return false;
    pollfd device{.fd = node_.Number(), .events = 0, .revents = 0};
    return ::poll(&device, 1, 0) == 0;  // POLLHUP and POLLERR are always asked for
}

int HidrawHold::Take(std::string_view path) {
    std::string name(path);
    FileDescriptor node = OpenNode(name.c_str());
    if (!node.IsOpen()) return errno;
    // A program that only looks has the lock for a moment, too. One that works has it for long, and is not
    // waited for in each search.
    const int attempts = node_.IsOpen() ? 1 : 5;
    int error = TryToLock(node, LOCK_EX);
    for (int attempt = 1; error == EWOULDBLOCK && attempt < attempts; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        error = TryToLock(node, LOCK_EX);
    }
    if (error != 0) return error;
    Drop();
    path_ = std::move(name);
    node_ = std::move(node);
    return 0;
}

void HidrawHold::Drop() {
    if (!node_.IsOpen()) return;
    // Whoever comes next finds no lock, even where the descriptor can only be closed later.
    ::flock(node_.Number(), LOCK_UN);
    writer_->Close(node_.Release());
}

}  // namespace vento::platform
