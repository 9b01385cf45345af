#pragma once

#include <optional>
#include <string_view>

#include "platform/hid_host.h"

namespace vento::platform {

/// Who a device is, told from the path of its interface, where USB devices have it as "vid_2b11&pid_0001";
/// nothing if the path doesn't say. For devices that can't be asked because they can't be opened.
[[nodiscard]] std::optional<HidIdentity> IdentityInPath(std::string_view path);

}  // namespace vento::platform
