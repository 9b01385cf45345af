#include "platform/windows/hid_functions.h"

#include <system_error>

namespace vento::platform {
namespace {

[[noreturn]] void Fail(const char* what) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), what);
}

template <class Function>
void Load(HMODULE library, const char* name, Function& function) {
    const FARPROC address = ::GetProcAddress(library, name);
    if (address == nullptr) Fail(name);
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(address));
}

}  // namespace

HidFunctions LoadHidFunctions() {
    // Stays loaded as long as the program runs.
    HMODULE const library = ::LoadLibraryExW(L"hid.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr) Fail("hid.dll");
    HidFunctions functions{};
    Load(library, "HidD_GetHidGuid", functions.getHidGuid);
    Load(library, "HidD_GetAttributes", functions.getAttributes);
    Load(library, "HidD_GetPreparsedData", functions.getPreparsedData);
    Load(library, "HidD_FreePreparsedData", functions.freePreparsedData);
    Load(library, "HidP_GetCaps", functions.getCaps);
    return functions;
}

}  // namespace vento::platform
