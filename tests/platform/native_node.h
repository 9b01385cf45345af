#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/hid_host.h"

namespace vento::test {

/// A device made of what the system has for sending packets from one end to another. The host under test has
/// one end, as if it had opened it; the test has the other.
class NativeNode {
  public:
    NativeNode();
    NativeNode(const NativeNode&) = delete;
    NativeNode& operator=(const NativeNode&) = delete;
    NativeNode(NativeNode&&) = delete;
    NativeNode& operator=(NativeNode&&) = delete;
    ~NativeNode();

    /// The host's end, for the host to close.
    [[nodiscard]] platform::HidHandle HostsEnd() const;

    /// An input report with `count` payload bytes, all 0xA5.
    void Send(std::size_t count);

    /// The output report that has been waiting longest, as it came.
    [[nodiscard]] std::vector<std::uint8_t> Receive();

    void Unplug();

  private:
    struct Ends;
    std::unique_ptr<Ends> ends_;
};

}  // namespace vento::test
