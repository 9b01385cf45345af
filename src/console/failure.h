#pragma once

#include <string>
#include <utility>

#include "platform/terminal.h"
#include "text/language.h"

namespace vento::console {

/// Exit statuses besides those of operations, which are their `ResultCode`; the numbers of sysexits.h.
inline constexpr int kNotWhole = 1;  ///< with `--strict`: there are warnings, or something was lost
inline constexpr int kWrongUsage = 64;
inline constexpr int kUnusableInput =
    65;  ///< a programme, scenario, key or container that can't be worked with
inline constexpr int kMissingInput = 66;  ///< an input file that can't be read
inline constexpr int kUnforeseen = 70;
inline constexpr int kFailedOutput = 73;  ///< results, trace or image that can't be written
inline constexpr int kInterrupted = 130;  ///< by Ctrl-C

/// Why a command ended without, or besides, a result of its own.
class Failure : public ReasonedError {
  public:
    /// `hint`, which may be empty, says what to do about it.
    Failure(int status, const Sentence& reason, Sentence hint = {})
        : ReasonedError(reason), status_(status), hint_(std::move(hint)) {}

    [[nodiscard]] int Status() const { return status_; }
    [[nodiscard]] const Sentence& Hint() const { return hint_; }

  private:
    int status_;
    Sentence hint_;
};

/// What went wrong with the file, or the like, of this name.
[[nodiscard]] inline Sentence About(const std::string& name, const std::exception& error) {
    return Labelled(name, ReasonOf(error));
}

/// The program is to end at once, with this status and without results.
struct EndedAtOnce {
    int status = 0;
};

/// Throws EndedAtOnce if termination was requested.
inline void EndIfDemanded(const platform::Terminal& terminal) {
    if (const auto status = terminal.TerminationRequested()) throw EndedAtOnce{*status};
}

/// The same, and after the first Ctrl-C too: for work that loses nothing by an end half-way.
inline void EndIfInterrupted(const platform::Terminal& terminal) {
    EndIfDemanded(terminal);
    if (terminal.Interrupts() > 0) throw EndedAtOnce{kInterrupted};
}

}  // namespace vento::console
