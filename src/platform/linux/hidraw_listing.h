#pragma once

#include <bitset>
#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/hid_host.h"

namespace vento::platform {

/// The numbers of hidraw nodes; the kernel hands out those from 0 to 63.
using HidrawNumbers = std::bitset<256>;

/// Adds to `numbers` every "hidrawNUMBER" that the folder holds. A folder that can't be read holds none.
void ListHidraw(const char* folder, HidrawNumbers& numbers);

/// The ids in the name that the kernel gives a HID device, "BUS:VENDOR:PRODUCT.INSTANCE" in hexadecimal
/// digits, at the end of a path; nothing if the path ends otherwise.
[[nodiscard]] std::optional<HidIdentity> IdentityInPath(std::string_view path);

}  // namespace vento::platform
