#pragma once

#include <string>
#include <string_view>

#include "platform/terminal.h"
#include "text/language.h"

namespace vento::console {

/// The name that stands for standard input among the files to read, and for standard output among those to
/// write.
inline constexpr const char* kStandardStream = "-";

/// Whether both paths lead to one file, or would if it were there. Throws platform::FileError where the
/// system can't tell: who is about to write must not take that for a no.
[[nodiscard]] bool SameFile(std::string_view one, std::string_view other);

/// A slip of the hand must not cost the file that is to be read: throws Failure, with `refusal` and the
/// `input` in it, unless the `output` is surely another file.
void RequireOther(const std::string& output, std::string_view input, const Phrase& refusal);

/// All bytes of a regular file, 1 GiB at the most. Throws Failure with `kMissingInput`.
[[nodiscard]] std::string ReadFile(const std::string& path);

/// The same, or standard input for "-"; throws EndedAtOnce after Ctrl-C while it waits for that.
[[nodiscard]] std::string ReadInput(const std::string& path, const platform::Terminal& terminal);

/// The same of standard input alone; throws platform::FileError in place of Failure.
[[nodiscard]] std::string ReadStandardInput(const platform::Terminal& terminal);

}  // namespace vento::console
