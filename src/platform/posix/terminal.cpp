#include "platform/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "platform/file_error.h"

namespace vento::platform {
namespace {

constexpr int kSignalStatus = 128;  // added to a signal's number, as shells do
constexpr std::size_t kUsualColumns = 80;

// All that the signal handlers touch.
std::atomic<int> interrupts{0};
std::atomic<int> endStatus{0};
static_assert(std::atomic<int>::is_always_lock_free);

void OnInterrupt(int signal) {
    if (++interrupts < 2) return;
    endStatus = kSignalStatus + signal;
    static_cast<void>(std::signal(signal, SIG_DFL));
}

void OnTermination(int signal) {
    endStatus = kSignalStatus + signal;
    static_cast<void>(std::signal(signal, SIG_DFL));
}

// What was ignored from the start stays so: nohup and background jobs mean it.
void Watch(int signal, void (*handler)(int)) {
    struct sigaction before {};
    if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    static_cast<void>(::sigaction(signal, &action, nullptr));
}

// A program may be started with its standard streams closed. The next file that it opened would then get
// the number of one of them, and the results would go into that file.
void OccupyStandardStreams() {
    while (true) {
        const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        if (descriptor > STDERR_FILENO) ::close(descriptor);
        if (descriptor < 0 || descriptor > STDERR_FILENO) return;
    }
}

class PosixTerminal final : public Terminal {
  public:
    PosixTerminal() {
        OccupyStandardStreams();
        Watch(SIGINT, OnInterrupt);
        Watch(SIGTERM, OnTermination);
        Watch(SIGHUP, OnTermination);
        // A reader that goes away must not kill a run that is writing to a remote: the failed write is told.
        static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    }

    [[nodiscard]] bool CanRedraw() const override {
        const char* kind = std::getenv("TERM");
        return ::isatty(STDERR_FILENO) == 1 && kind != nullptr && *kind != '\0' &&
               std::string_view(kind) != "dumb";
    }

    [[nodiscard]] std::size_t Columns() const override {
        winsize size{};
        if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0) return size.ws_col;
        const char* told = std::getenv("COLUMNS");
        const long columns = told != nullptr ? std::strtol(told, nullptr, 10) : 0;
        return columns > 0 ? static_cast<std::size_t>(columns) : kUsualColumns;
    }

    [[nodiscard]] bool CanAsk() const override {
        return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
    }

    // A signal that comes in just before the wait is seen at the next look.
    [[nodiscard]] std::size_t ReadInput(std::span<char> buffer) const override {
        constexpr int kLookMilliseconds = 200;
        while (interrupts == 0 && endStatus == 0) {
            pollfd input{STDIN_FILENO, POLLIN, 0};
            const int ready = ::poll(&input, 1, kLookMilliseconds);
            const ssize_t count = ready > 0 ? ::read(STDIN_FILENO, buffer.data(), buffer.size()) : ready;
            if (ready > 0 && count >= 0) return static_cast<std::size_t>(count);
            if (count < 0 && errno != EINTR && errno != EAGAIN)
                throw FileError(std::error_code(errno, std::generic_category()));
        }
        return 0;
    }

    [[nodiscard]] int Interrupts() const override { return interrupts; }

    [[nodiscard]] std::optional<int> TerminationRequested() const override {
        const int status = endStatus;
        return status != 0 ? std::optional(status) : std::nullopt;
    }
};

}  // namespace

std::unique_ptr<Terminal> MakeNativeTerminal() {
    return std::make_unique<PosixTerminal>();
}

std::vector<std::string> NativeArguments(int argc, const char* const* argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>{};
}

}  // namespace vento::platform
