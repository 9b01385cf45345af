#pragma once

#include <string>
#include <string_view>

#include "platform/hid_host.h"
#include "platform/windows/owned_handle.h"

namespace vento::platform {

/// The lock of a HID interface, by which VENTOs keep out of each other's operations: the mutex of this name
/// in the whole machine. Null if another one has it; it is free again when its owner's process ends, at the
/// latest.
[[nodiscard]] OwnedHandle LockInterface(std::string_view path);

/// The lock of the transmitter that an operation works with.
class WindowsHidHold final : public Conversation {
  public:
    [[nodiscard]] bool Holds(std::string_view path) const { return lock_ && path == path_; }

    /// Locks this interface instead of what was locked. False if another VENTO has it; all is as it was then.
    [[nodiscard]] bool Take(std::string_view path);

  private:
    std::string path_;
    OwnedHandle lock_;
};

}  // namespace vento::platform
