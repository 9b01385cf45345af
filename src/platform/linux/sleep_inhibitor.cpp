#include <dlfcn.h>
#include <fcntl.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "platform/native.h"
#include "platform/posix/file_descriptor.h"

namespace vento::platform {
namespace {

constexpr std::uint64_t kBoundInMicroseconds = 1'000'000;

/// What is used of libsystemd. It is loaded when it is needed: with the five libraries that it brings along,
/// every start of the program would take several times as long.
class SystemBus {
  public:
    SystemBus() : library_(::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL)) {
        const bool loaded = library_ != nullptr && Load("sd_bus_open_system", open_) &&
                            Load("sd_bus_set_method_call_timeout", setTimeout_) &&
                            Load("sd_bus_call_method", call_) && Load("sd_bus_message_read", read_) &&
                            Load("sd_bus_message_unref", unref_) && Load("sd_bus_flush_close_unref", close_);
        if (loaded && open_(&bus_) < 0) bus_ = nullptr;
        if (bus_ != nullptr) setTimeout_(bus_, kBoundInMicroseconds);
    }
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;
    SystemBus(SystemBus&&) = delete;
    SystemBus& operator=(SystemBus&&) = delete;
    /// The library stays, for the next time.
    ~SystemBus() {
        if (bus_ != nullptr) close_(bus_);
    }

    /// logind's lock on what `what` names; not open if it gives none.
    [[nodiscard]] FileDescriptor Inhibit(const char* what, const std::string& reason) const {
        if (bus_ == nullptr) return {};
        sd_bus_message* reply = nullptr;
        call_(bus_, "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
              "Inhibit", nullptr, &reply, "ssss", what, "VENTO", reason.c_str(), "block");
        int lock = -1;  // the message's own
        FileDescriptor own;
        if (reply != nullptr && read_(reply, "h", &lock) > 0) {
            own = FileDescriptor(::fcntl(lock, F_DUPFD_CLOEXEC, 0));
        }
        if (reply != nullptr) unref_(reply);
        return own;
    }

  private:
    template <class Function>
    [[nodiscard]] bool Load(const char* name, Function& function) {
        function = reinterpret_cast<Function>(::dlsym(library_, name));
        return function != nullptr;
    }

    void* library_;
    decltype(&::sd_bus_open_system) open_ = nullptr;
    decltype(&::sd_bus_set_method_call_timeout) setTimeout_ = nullptr;
    decltype(&::sd_bus_call_method) call_ = nullptr;
    decltype(&::sd_bus_message_read) read_ = nullptr;
    decltype(&::sd_bus_message_unref) unref_ = nullptr;
    decltype(&::sd_bus_flush_close_unref) close_ = nullptr;
    sd_bus* bus_ = nullptr;
};

/// A lock of logind's is a descriptor, and ends with the process at the latest.
class LogindLock final : public SleepInhibitor {
  public:
    explicit LogindLock(FileDescriptor lock) : lock_(std::move(lock)) {}

  private:
    FileDescriptor lock_;
};

}  // namespace

std::unique_ptr<SleepInhibitor> InhibitNativeSleep(std::string_view reason) {
    if (::access("/run/systemd/seats", F_OK) != 0) return nullptr;  // there is no logind
    const SystemBus bus;
    // Who does not sit at the computer may only keep it from falling asleep by itself.
    for (const char* what : {"shutdown:sleep:idle", "idle"}) {
        FileDescriptor lock = bus.Inhibit(what, std::string(reason));
        if (lock.IsOpen()) return std::make_unique<LogindLock>(std::move(lock));
    }
    return nullptr;
}

}  // namespace vento::platform
