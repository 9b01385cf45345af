#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/hid_host.h"
#include "platform/linux/bounded_writer.h"
#include "platform/posix/file_descriptor.h"

namespace vento::platform {

/// Opens a node for reading and writing; errno tells why if it isn't open.
[[nodiscard]] FileDescriptor OpenNode(const char* path);

/// 0 when the lock was had, else the error; EWOULDBLOCK when another VENTO has it.
[[nodiscard]] int TryToLock(const FileDescriptor& node, int operation);

/// What is kept open of the transmitter between the exchanges of one operation, and its lock.
///
/// usbhid sleeps 50 ms, and longer where the device does, whenever a device goes from no opener to one. One
/// opener more, through which nothing is read or written, spares that to every exchange but the first. Its
/// lock tells other VENTOs that the transmitter is in use; it ends with the process at the latest.
class HidrawHold final : public Conversation {
  public:
    explicit HidrawHold(std::shared_ptr<BoundedWriter> writer) : writer_(std::move(writer)) {}
    HidrawHold(const HidrawHold&) = delete;
    HidrawHold& operator=(const HidrawHold&) = delete;
    HidrawHold(HidrawHold&&) = delete;
    HidrawHold& operator=(HidrawHold&&) = delete;
    ~HidrawHold() override { Drop(); }

    /// Whether it is this node that is held, and its device still there.
    [[nodiscard]] bool Holds(std::string_view path) const;

    /// Holds this node instead of what was held. 0, or why it can't be; all is as it was then.
    [[nodiscard]] int Take(std::string_view path);

    void Drop();

  private:
    std::shared_ptr<BoundedWriter> writer_;  ///< it knows when a descriptor can be closed without waiting
    std::string path_;
    FileDescriptor node_;
};

}  // namespace vento::platform
