#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vento::platform {

/// Where a console program was started: the terminal behind its standard error, and those who interrupt it.
class Terminal {
  public:
    Terminal() = default;
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    Terminal(Terminal&&) = delete;
    Terminal& operator=(Terminal&&) = delete;
    virtual ~Terminal() = default;

    /// Whether standard error is a terminal that follows the ANSI control sequences, so that what stands on
    /// it can be drawn anew.
    [[nodiscard]] virtual bool CanRedraw() const = 0;

    /// Characters in a line of that terminal, as wide as it is now.
    [[nodiscard]] virtual std::size_t Columns() const = 0;

    /// How often the operator has pressed Ctrl-C.
    [[nodiscard]] virtual int Interrupts() const = 0;

    /// Whether there is somebody to ask: standard input and standard error are a terminal.
    [[nodiscard]] virtual bool CanAsk() const = 0;

    /// Waits for bytes on standard input and puts as many as there are into `buffer`. Their number; 0 at the
    /// end of the input, and when the operator has pressed Ctrl-C or an end is demanded. Throws FileError.
    [[nodiscard]] virtual std::size_t ReadInput(std::span<char> buffer) const = 0;

    /// The exit status to end with at once: 130 when the operator has pressed Ctrl-C twice, 128 and the
    /// signal's number when a signal has requested termination. Nothing as long as it may go on.
    [[nodiscard]] virtual std::optional<int> TerminationRequested() const = 0;
};

/// Takes charge of the process's interrupts and standard streams; there is one of it, made first of all. The
/// first request to terminate is answered by the program itself, the next of the same kind by the system.
[[nodiscard]] std::unique_ptr<Terminal> MakeNativeTerminal();

/// What stands behind the program's name on its command line, as UTF-8.
[[nodiscard]] std::vector<std::string> NativeArguments(int argc, const char* const* argv);

}  // namespace vento::platform
