#pragma once

#include <cstdint>
#include <string>

#include "simulator/remote.h"
#include "storage/json.h"

namespace vento::simulator {

/// Which words a `memory` in JSON may hold.
enum class WordForm : std::uint8_t {
    firstByte,  ///< its first byte, the second being 52
    anyWord,    ///< that, or a list of both bytes
};

/// Reads an object of lists of words, each under the decimal offset of its first. Throws
/// storage::ContentError.
[[nodiscard]] WordRuns ReadWordRuns(const storage::JsonNode& node, WordForm form);

[[nodiscard]] std::string WriteWordRuns(const WordRuns& runs);

}  // namespace vento::simulator
