#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "protocol/program_remote.h"
#include "protocol/read_back.h"
#include "text/language.h"

/// What an operation's outcome is in JSON, and for a person to read.
namespace vento::console {

/// Null where there is none.
[[nodiscard]] nlohmann::ordered_json VersionFields(const std::optional<RemoteVersion>& version);

/// One column of a programming run.
[[nodiscard]] nlohmann::ordered_json OutcomeFields(const ProgrammingOutcome& outcome, std::size_t column,
                                                   Language language);

/// The remote that an operation with a programme has met, and a line for each column, of which `describe`
/// says what became. `file` is the programme's path. Empty if no remote was met.
[[nodiscard]] Sentence DescribeColumns(const ProgrammingOutcome& outcome, const std::string& file,
                                       Sentence (*describe)(const ColumnOutcome&));

/// The sections of a remote that was read.
[[nodiscard]] nlohmann::ordered_json SectionFields(const RemoteReading& reading);

/// Why a read that has succeeded has nothing to show; empty if it has.
[[nodiscard]] Sentence ExplainEmptyReading(const RemoteReading& reading);

}  // namespace vento::console
