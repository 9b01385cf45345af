#include "platform/windows/hid_hold.h"

#include <cstdint>
#include <cstdio>
#include <utility>

#include "platform/windows/system.h"
#include "text/encoding.h"
// It needs that before it.
#include <sddl.h>

namespace vento::platform {
namespace {

/// A path is longer than a name may be and has characters that none may have: FNV-1a, in 64 bits.
std::string NameFor(std::string_view path) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char letter : path)
        hash = (hash ^ static_cast<unsigned char>(AsciiLower(letter))) * 0x100000001B3;
    std::string name(40, '\0');
    name.resize(static_cast<std::size_t>(std::snprintf(name.data(), name.size(), "Global\\VENTO-%016llx",
                                                       static_cast<unsigned long long>(hash))));
    return name;
}

/// Everybody's, so that another user who is logged in finds out, too.
class OpenToAll {
  public:
    OpenToAll() {
        ::ConvertStringSecurityDescriptorToSecurityDescriptorA("D:(A;;GA;;;WD)", SDDL_REVISION_1,
                                                               &descriptor_, nullptr);
    }
    OpenToAll(const OpenToAll&) = delete;
    OpenToAll& operator=(const OpenToAll&) = delete;
    OpenToAll(OpenToAll&&) = delete;
    OpenToAll& operator=(OpenToAll&&) = delete;
    ~OpenToAll() { ::LocalFree(descriptor_); }

    [[nodiscard]] SECURITY_ATTRIBUTES Attributes() const {
        return {.nLength = sizeof(SECURITY_ATTRIBUTES),
                .lpSecurityDescriptor = descriptor_,
                .bInheritHandle = FALSE};
    }

  private:
    PSECURITY_DESCRIPTOR descriptor_ = nullptr;
};

}  // namespace

OwnedHandle LockInterface(std::string_view path) {
    const OpenToAll all;
    SECURITY_ATTRIBUTES attributes = all.Attributes();
    // That it is there says that it is taken: so the lock does not hang on one thread.
    OwnedHandle lock(::CreateMutexA(&attributes, FALSE, NameFor(path).c_str()));
    if (lock && ::GetLastError() == ERROR_ALREADY_EXISTS) return {};
    return lock;
}

bool WindowsHidHold::Take(std::string_view path) {
    OwnedHandle lock = LockInterface(path);
    // A program that only looks has the lock for a moment, too.
    for (int attempt = 1; !lock && !lock_ && attempt < 5; ++attempt) {
        ::Sleep(10);
        lock = LockInterface(path);
    }
    if (!lock) return false;
    lock_ = std::move(lock);
    path_ = path;
    return true;
}

}  // namespace vento::platform
