#include "platform/terminal.h"

#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <span>

#include "platform/file_error.h"
#include "platform/windows/system.h"
#include "platform/windows/text.h"

namespace vento::platform {
namespace {

constexpr int kSignalStatus = 128;  // added to a signal's number, as shells do
constexpr std::size_t kUsualColumns = 80;
constexpr std::size_t kStreamBuffer = 65536;
constexpr DWORD kClosingGraceInMilliseconds =
    5000;  // as much as the system gives a program whose window is closed

// All that the handler touches, which has a thread of its own.
std::atomic<int> interrupts{0};
std::atomic<int> endStatus{0};

// TRUE where the event has been dealt with; FALSE lets the system end the program.
BOOL WINAPI OnControlEvent(DWORD event) {
    switch (event) {
        case CTRL_C_EVENT:
            if (++interrupts == 2) endStatus = kSignalStatus + SIGINT;
            return interrupts <= 2 ? TRUE : FALSE;
        case CTRL_BREAK_EVENT:
            return endStatus.exchange(kSignalStatus + SIGBREAK) == 0 ? TRUE : FALSE;
        default:  // the console's window is closed, the user logs off: once this returns, the program is
                  // ended
            endStatus = kSignalStatus + SIGTERM;
            ::Sleep(kClosingGraceInMilliseconds);
            return FALSE;
    }
}

HANDLE StandardError() {
    return ::GetStdHandle(STD_ERROR_HANDLE);
}

class WindowsTerminal final : public Terminal {
  public:
    WindowsTerminal() : codePage_(::GetConsoleOutputCP()) {
        ::SetConsoleCtrlHandler(OnControlEvent, TRUE);
        ::SetConsoleOutputCP(CP_UTF8);
        if (::GetConsoleMode(StandardError(), &mode_) != 0) {
            canRedraw_ = ::SetConsoleMode(StandardError(), mode_ | ENABLE_PROCESSED_OUTPUT |
                                                               ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
        }
        for (std::FILE* stream : {stdout, stderr}) {
            // What is written is the same, byte for byte, on every system.
            static_cast<void>(::_setmode(::_fileno(stream), _O_BINARY));
            // The C library would hand a console one byte after the other, and it shows no part of a
            // character.
            static_cast<void>(std::setvbuf(stream, nullptr, _IOFBF, kStreamBuffer));
        }
    }
    WindowsTerminal(const WindowsTerminal&) = delete;
    WindowsTerminal& operator=(const WindowsTerminal&) = delete;
    WindowsTerminal(WindowsTerminal&&) = delete;
    WindowsTerminal& operator=(WindowsTerminal&&) = delete;
    ~WindowsTerminal() override {  // the console goes on without us
        static_cast<void>(std::fflush(nullptr));
        if (canRedraw_) ::SetConsoleMode(StandardError(), mode_);
        if (codePage_ != 0) ::SetConsoleOutputCP(codePage_);
    }

    [[nodiscard]] bool CanRedraw() const override { return canRedraw_; }

    [[nodiscard]] std::size_t Columns() const override {
        CONSOLE_SCREEN_BUFFER_INFO info{};
        if (::GetConsoleScreenBufferInfo(StandardError(), &info) == 0) return kUsualColumns;
        const int columns = info.srWindow.Right - info.srWindow.Left + 1;
        return static_cast<std::size_t>(columns);
    }

    [[nodiscard]] bool CanAsk() const override {
        DWORD mode = 0;
        return ::GetConsoleMode(::GetStdHandle(STD_INPUT_HANDLE), &mode) != 0 &&
               ::GetConsoleMode(StandardError(), &mode) != 0;
    }

    [[nodiscard]] std::size_t ReadInput(std::span<char> buffer) const override {
        DWORD count = 0;
        if (::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), buffer.data(), static_cast<DWORD>(buffer.size()),
                       &count, nullptr) != 0) {
            return count;
        }
        const DWORD error = ::GetLastError();  // whoever wrote into the pipe is gone; Ctrl-C
        if (error == ERROR_BROKEN_PIPE || error == ERROR_OPERATION_ABORTED) return 0;
        throw FileError(SystemError(error));
    }

    [[nodiscard]] int Interrupts() const override { return interrupts; }

    [[nodiscard]] std::optional<int> TerminationRequested() const override {
        const int status = endStatus;
        return status != 0 ? std::optional(status) : std::nullopt;
    }

  private:
    UINT codePage_;
    DWORD mode_ = 0;
    bool canRedraw_ = false;
};

}  // namespace

std::unique_ptr<Terminal> MakeNativeTerminal() {
    return std::make_unique<WindowsTerminal>();
}

// The system has the command line as one text; `argv` is what the C library has made of it.
std::vector<std::string> NativeArguments(int /*argc*/, const char* const* /*argv*/) {
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (words == nullptr) return {};
    std::vector<std::string> arguments;
    for (const wchar_t* word : std::span(words, static_cast<std::size_t>(count)).subspan(1))
        arguments.push_back(Utf8(word));
    ::LocalFree(static_cast<HLOCAL>(words));
    return arguments;
}

}  // namespace vento::platform
