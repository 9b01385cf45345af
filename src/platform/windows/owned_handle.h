#pragma once

#include <utility>

#include "platform/windows/system.h"

namespace vento::platform {

/// A handle of the system's, closed at the end of its owner's life. Both values that stand for none do so
/// here.
class OwnedHandle {
  public:
    OwnedHandle() = default;
    explicit OwnedHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    OwnedHandle(OwnedHandle&& other) noexcept : handle_(other.Release()) {}
    OwnedHandle& operator=(OwnedHandle&& other) noexcept {
        OwnedHandle old(std::exchange(handle_, other.Release()));
        return *this;
    }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    ~OwnedHandle() {
        if (handle_ != nullptr) ::CloseHandle(handle_);
    }

    [[nodiscard]] explicit operator bool() const { return handle_ != nullptr; }
    [[nodiscard]] HANDLE Get() const { return handle_; }
    [[nodiscard]] HANDLE Release() { return std::exchange(handle_, nullptr); }

  private:
    HANDLE handle_ = nullptr;
};

}  // namespace vento::platform
