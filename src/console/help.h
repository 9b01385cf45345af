#pragma once

#include <span>
#include <string>
#include <string_view>

#include "console/commands.h"
#include "text/language.h"

namespace vento::console {

/// A status that the program can end with.
struct StatusEntry {
    std::string_view status;
    Phrase cause;
    bool isResult = false;  ///< it is a `ResultCode`, with a text for the status line
};

[[nodiscard]] std::span<const StatusEntry> Statuses();

/// The text of the status line, where there is one, and the cause.
[[nodiscard]] std::string DescribeStatus(const StatusEntry& status, Language language);

/// "program FILE [OPTION…]"
[[nodiscard]] std::string Synopsis(const CommandEntry& command, Language language);

/// "-q, --quiet", "--trace FILE", "--simulate[=SCENARIO]"
[[nodiscard]] std::string Spelling(const OptionEntry& option, Language language);

}  // namespace vento::console
