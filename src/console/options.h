#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "text/language.h"

namespace vento::console {

struct CommandEntry;

/// What the command line asks for. Paths are UTF-8.
struct Options {
    const CommandEntry* command = nullptr;  ///< never null in what ParseOptions gives
    std::string file;                       ///< with the commands that take one
    bool consume = false;
    std::optional<std::string> dest;      ///< where the result of the codec goes
    std::optional<std::string> key;       ///< the file with the key of the codec
    std::optional<std::string> simulate;  ///< the scenario; empty for the plain simulation
    std::optional<Language> language;
    std::optional<std::string> trace;
    bool json = false;
    bool quiet = false;
};

/// The command line leaves nothing to do but to say this: help on standard output with status 0, a
/// complaint on standard error with any other.
struct LastWord {
    int status = 0;
    std::string text;
};

/// Takes the arguments behind the program's name.
[[nodiscard]] std::variant<Options, LastWord> ParseOptions(std::vector<std::string> arguments);

}  // namespace vento::console
