#pragma once

#include <system_error>

#include "text/language.h"

namespace vento::platform {

/// Why the system refused something, for people: the common reasons in every language, without a full stop,
/// any other in the system's own words.
[[nodiscard]] Sentence SystemReason(std::error_code error);

/// A file that could not be opened, read or written. It names no file: whoever shows it knows which was
/// meant.
class FileError : public ReasonedError {
  public:
    using ReasonedError::ReasonedError;
    explicit FileError(std::error_code error) : FileError(SystemReason(error)) {}
    explicit FileError(std::errc error) : FileError(std::make_error_code(error)) {}

    /// For what is there, but is a pipe, a device or the like.
    [[nodiscard]] static FileError NotRegular();
};

}  // namespace vento::platform
