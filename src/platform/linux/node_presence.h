#pragma once

#include "platform/hid_host.h"

namespace vento::platform {

/// What the file system and the kernel's list of locks say of a device node, which is not opened. A program
/// that works with a node has a lock on all of it.
[[nodiscard]] Presence PresenceOfNode(const char* path);

}  // namespace vento::platform
