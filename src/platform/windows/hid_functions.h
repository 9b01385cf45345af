#pragma once

#include "platform/windows/system.h"
// These need that before them.
extern "C" {
#include <hidsdi.h>
}

namespace vento::platform {

/// The functions of hid.dll. It is not one of the libraries that Windows always takes from its own folder, so
/// a file of that name beside the program would be loaded, and run, if the program were linked to it.
struct HidFunctions {
    decltype(&::HidD_GetHidGuid) getHidGuid;
    decltype(&::HidD_GetAttributes) getAttributes;
    decltype(&::HidD_GetPreparsedData) getPreparsedData;
    decltype(&::HidD_FreePreparsedData) freePreparsedData;
    decltype(&::HidP_GetCaps) getCaps;
};

/// Throws std::system_error if the system has no HID.
[[nodiscard]] HidFunctions LoadHidFunctions();

}  // namespace vento::platform
