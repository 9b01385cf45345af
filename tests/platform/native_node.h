#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/hid_host.h"

namespace vento::test {

/// A device made of what the system has for sending packets from one end to another. The host under test has
/// one end, as if it had opened it; the test has the other. Both are the host's to close.
struct NativeNode {
    platform::HidHandle host = -1;
    platform::HidHandle device = -1;
};

/// Throws std::runtime_error if the system has no such thing to give.
[[nodiscard]] NativeNode MakeNativeNode();

/// An input report with `count` payload bytes, all 0xA5; true if it was sent.
[[nodiscard]] bool Send(const NativeNode& node, std::size_t count);

/// The output report that has been waiting longest, as it came.
[[nodiscard]] std::vector<std::uint8_t> Receive(const NativeNode& node);

}  // namespace vento::test
