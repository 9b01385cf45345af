// A library to preload beside libfiu's own: it counts the calls that could fail, and lets one of them fail,
// or all from one on. The environment says which:
//
//   FAILING_POINTS   libfiu's names of the calls, parted by commas
//   FAILING_CALL     the first to fail, from 1; 0 for none
//   FAILING_ALL      set: those behind it fail too
//   FAILING_RECORD   a file that gets the name of each call, one a line. Allocations are told once for each
//   place that
//                    they are made from: the call's number, and a number that stands for the place
#include <dlfcn.h>
#include <fcntl.h>
#include <fiu-control.h>
#include <fiu.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <unwind.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace {

std::atomic<long> calls{0};
long firstToFail = 0;
bool allFail = false;
int record = -1;

// --- the record, by means that no wrapper stands in front of ---

void Tell(std::string_view text) {
    static_cast<void>(::syscall(SYS_write, record, text.data(), text.size()));
}

struct Place {
    std::uint64_t hash = 14695981039346656037U;
};

// The same in every process: an address counts from where its library begins.
_Unwind_Reason_Code AddFrame(_Unwind_Context* context, void* argument) {
    auto& place = *static_cast<Place*>(argument);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an address, as the unwinder has it
    void* const address = reinterpret_cast<void*>(_Unwind_GetIP(context));
    Dl_info library{};
    if (::dladdr(address, &library) == 0) return _URC_END_OF_STACK;
    const auto offset =
        static_cast<std::uint64_t>(static_cast<char*>(address) - static_cast<char*>(library.dli_fbase));
    place.hash = (place.hash ^ offset) * 1099511628211U;
    return _URC_NO_REASON;
}

void TellPlace(long call) {
    static std::array<std::uint64_t, 1U << 16U> seen{};
    static std::size_t count = 0;
    Place place;
    _Unwind_Backtrace(AddFrame, &place);
    const auto known = std::span(seen).first(count);
    if (count == seen.size() || std::ranges::find(known, place.hash) != known.end()) return;
    seen.at(count++) = place.hash;
    std::array<char, 64> line{};
    const int length = std::snprintf(line.data(), line.size(), "%ld %016lx\n", call, place.hash);
    Tell({line.data(), static_cast<std::size_t>(length)});
}

int MustFail(const char* name, int*, void**, unsigned int*) {
    const long call = ++calls;
    if (record >= 0) {
        if (std::string_view(name).starts_with("libc/mm/")) {
            TellPlace(call);
        } else {
            Tell(name);
            Tell("\n");
        }
    }
    if (firstToFail == 0) return 0;
    // A disk that takes nothing any more still lets go of a file: what was begun can be removed.
    if (allFail && std::string_view(name) == "posix/io/dir/unlink") return 0;
    return static_cast<int>(allFail ? call >= firstToFail : call == firstToFail);
}

__attribute__((constructor)) void Arm() {
    const char* const points = std::getenv("FAILING_POINTS");
    if (points == nullptr) return;
    firstToFail = std::atol(std::getenv("FAILING_CALL"));
    allFail = std::getenv("FAILING_ALL") != nullptr;
    if (const char* const file = std::getenv("FAILING_RECORD")) {
        constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
        record = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, file, kFlags, 0600));
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): libfiu hands an error's number on as a pointer
    void* const reason = reinterpret_cast<void*>(std::string_view(points).starts_with("libc") ? ENOMEM : EIO);
    std::array<char, 1024> names{};
    std::strncpy(names.data(), points, names.size() - 1);
    for (char* name = std::strtok(names.data(), ","); name != nullptr; name = std::strtok(nullptr, ","))
        fiu_enable_external(::strdup(name), 1, reason, 0, MustFail);
}

// --- what the programs call and libfiu has no wrapper for ---

// The system's own function, unless it is to fail.
template <typename Result = int, typename... Arguments>
Result Call(const char* point, const char* function, Arguments... arguments) {
    if (fiu_fail(point) != 0) {
        errno = static_cast<int>(reinterpret_cast<std::intptr_t>(fiu_failinfo()));
        return static_cast<Result>(-1);
    }
    return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, function))(arguments...);
}

}  // namespace

// NOLINTBEGIN(readability-identifier-naming,readability-inconsistent-declaration-parameter-name)
extern "C" {

int stat(const char* path, struct stat* status) {
    return Call("posix/io/own/stat", "stat", path, status);
}
int lstat(const char* path, struct stat* status) {
    return Call("posix/io/own/lstat", "lstat", path, status);
}
int fstat(int file, struct stat* status) {
    return Call("posix/io/own/fstat", "fstat", file, status);
}
int fstat64(int file, struct stat64* status) {
    return Call("posix/io/own/fstat", "fstat64", file, status);
}
int access(const char* path, int mode) {
    return Call("posix/io/own/access", "access", path, mode);
}
int faccessat(int folder, const char* path, int mode, int flags) {
    return Call("posix/io/own/faccessat", "faccessat", folder, path, mode, flags);
}
int fchmod(int file, mode_t mode) {
    return Call("posix/io/own/fchmod", "fchmod", file, mode);
}
int fchown(int file, uid_t owner, gid_t group) {
    return Call("posix/io/own/fchown", "fchown", file, owner, group);
}
int flock(int file, int operation) {
    return Call("posix/io/own/flock", "flock", file, operation);
}
ssize_t getdents64(int folder, void* buffer, size_t size) {
    return Call<ssize_t>("posix/io/own/getdents64", "getdents64", folder, buffer, size);
}
ssize_t readlink(const char* path, char* buffer, size_t size) {
    return Call<ssize_t>("posix/io/own/readlink", "readlink", path, buffer, size);
}
off64_t lseek64(int file, off64_t offset, int whence) {
    return Call<off64_t>("posix/io/own/lseek", "lseek64", file, offset, whence);
}
char* realpath(const char* path, char* resolved) {
    if (Call("posix/io/own/realpath", "access", path, F_OK) != 0) return nullptr;
    return reinterpret_cast<char* (*)(const char*, char*)>(::dlsym(RTLD_NEXT, "realpath"))(path, resolved);
}

}  // extern "C"
// NOLINTEND(readability-identifier-naming,readability-inconsistent-declaration-parameter-name)
