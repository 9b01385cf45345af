#pragma once

#include <unistd.h>

#include <utility>

namespace vento::platform {

/// Owns an open file descriptor and closes it; below 0 it owns nothing.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor(FileDescriptor&& other) noexcept : number_(other.Release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    /// An interrupted close is not repeated: the descriptor is gone, and its number may be another's by then.
    ~FileDescriptor() {
        if (number_ >= 0) ::close(number_);
    }

    [[nodiscard]] bool IsOpen() const { return number_ >= 0; }
    [[nodiscard]] int Number() const { return number_; }
    /// Hands the descriptor over to the caller.
    [[nodiscard]] int Release() { return std::exchange(number_, -1); }

  private:
    int number_ = -1;
};

}  // namespace vento::platform
