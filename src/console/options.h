#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/commands.h"
#include "text/language.h"

namespace vento::console {

struct CommandEntry;

/// What the command line asks for. Paths are UTF-8.
struct Options {
    const CommandEntry* command = nullptr;  ///< never null in what ParseOptions gives
    std::vector<std::string> arguments;     ///< behind the command: as many as it takes
    bool consume = false;
    bool strict = false;
    bool verify = false;
    std::optional<int> series;               ///< how many remotes; 0 for as many as come
    std::optional<std::string> log;          ///< the file that each run adds a line to
    std::optional<std::string> transmitter;  ///< the interface to use, by its path
    std::optional<RemoteVersion> remoteVersion;
    std::optional<SectionOffsets> sections;
    bool force = false;
    std::optional<std::string> key;       ///< the file with the key of the codec
    std::optional<std::string> simulate;  ///< the scenario; empty for the plain simulation
    std::optional<Language> language;
    std::optional<std::string> trace;
    bool json = false;
    bool quiet = false;
    bool verbose = false;
    bool help = false;     ///< in place of what the command does
    bool version = false;  ///< likewise

    /// An argument by its place, empty if it was left out.
    [[nodiscard]] std::string Argument(std::size_t place) const {
        return place < arguments.size() ? arguments[place] : std::string{};
    }
};

/// The language of a name such as "it" or "ENG", in any case.
[[nodiscard]] std::optional<Language> LanguageNamed(std::string_view name);

/// The language that the command line asks for, however wrong the rest of it is, or else the desktop's.
/// Allocates nothing.
[[nodiscard]] Language LanguageFor(std::span<const char* const> arguments);

/// Throws Failure, with the nearest command that there is.
[[noreturn]] void RefuseCommand(const std::string& name);

/// Takes the arguments behind the program's name. Throws Failure, with `kWrongUsage`, if they make no sense.
[[nodiscard]] Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace vento::console
