#include "platform/native.h"

#include <system_error>

#include "platform/linux/hidraw_host.h"
#include "platform/posix/files.h"

namespace vento::platform {

std::unique_ptr<HidHost> MakeNativeHidHost() {
    return std::make_unique<HidrawHost>();
}

HidBackEnd NativeHidBackEnd() {
    return HidBackEnd::hidraw;
}

std::unique_ptr<Files> MakeNativeFiles() {
    std::error_code unknown;
    return std::make_unique<PosixFiles>(
        std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path());
}

}  // namespace vento::platform
