#pragma once

#include <stdexcept>
#include <string>

namespace vento::console {

/// Exit statuses besides those of operations, which are their `ResultCode`; the numbers of sysexits.h.
inline constexpr int kWrongUsage = 64;
inline constexpr int kUnusableInput =
    65;  ///< a programme, scenario, key or container that can't be worked with
inline constexpr int kMissingInput = 66;  ///< an input file that can't be read
inline constexpr int kUnforeseen = 70;
inline constexpr int kFailedOutput = 73;  ///< results, trace or image that can't be written

/// Why a command ended without, or besides, a result of its own.
class Failure : public std::runtime_error {
  public:
    Failure(int status, const std::string& what) : std::runtime_error(what), status_(status) {}

    [[nodiscard]] int Status() const { return status_; }

  private:
    int status_;
};

/// The program is to end at once, with this status and without another word: the operator or the system
/// wants it so.
struct EndedAtOnce {
    int status = 0;
};

}  // namespace vento::console
