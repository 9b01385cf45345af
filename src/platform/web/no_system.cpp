// The C library's way to a system that a page does not have. With these no part of it becomes an import of
// the module: nothing can be written or read, and nobody tries.

#include <cstdint>

namespace {
constexpr std::int32_t kBadDescriptor = 8;  // __WASI_ERRNO_BADF
}

// NOLINTBEGIN(readability-identifier-naming,bugprone-reserved-identifier): the C library's names
extern "C" {

std::int32_t __imported_wasi_snapshot_preview1_fd_close(std::int32_t /*file*/) {
    return kBadDescriptor;
}

std::int32_t __imported_wasi_snapshot_preview1_fd_seek(std::int32_t /*file*/, std::int64_t /*offset*/,
                                                       std::int32_t /*from*/, std::int32_t /*place*/) {
    return kBadDescriptor;
}

std::int32_t __imported_wasi_snapshot_preview1_fd_write(std::int32_t /*file*/, std::int32_t /*pieces*/,
                                                        std::int32_t /*count*/, std::int32_t /*written*/) {
    return kBadDescriptor;
}

}  // extern "C"
// NOLINTEND(readability-identifier-naming,bugprone-reserved-identifier)
