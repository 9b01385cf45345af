#pragma once

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "console/options.h"

namespace CLI {
class App;
}

namespace vento::platform {
class Terminal;
}

namespace vento::console {

class Notices;

/// What a command works with; all of it outlives the command.
struct Console {
    const Options& options;
    const platform::Terminal& terminal;
    Notices& notices;
};

/// What a command comes to. It is filled while the command runs, and what is in it holds if the command fails
/// half-way.
struct Answer {
    int status = 0;
    std::string diagnostic;  ///< plain English sentences; empty if all is well
    std::string text;        ///< the results for people, in whole lines
    /// What the JSON object holds besides `operation` and `diagnostic`: every key, from the command's first
    /// step on.
    nlohmann::ordered_json fields = nlohmann::ordered_json::object();

    void Diagnose(std::string_view sentence) {
        if (!diagnostic.empty()) diagnostic += ' ';
        diagnostic += sentence;
    }
};

/// A command of the program. Each has a file of its own, named after it.
struct CommandEntry {
    std::string_view name;
    std::string_view summary;
    /// Declares the arguments and options that the command alone has.
    void (*declare)(CLI::App& command, Options& options);
    /// Throws Failure, EndedAtOnce, and whatever is unforeseen.
    void (*run)(const Console& console, Answer& answer);
};

extern const CommandEntry kProgramCommand;
extern const CommandEntry kReadCommand;
extern const CommandEntry kCheckCommand;
extern const CommandEntry kDevicesCommand;
extern const CommandEntry kEncodeCommand;
extern const CommandEntry kDecodeCommand;

/// All commands, in the order in which the help names them.
inline constexpr std::array kCommands{&kProgramCommand, &kReadCommand,   &kCheckCommand,
                                      &kDevicesCommand, &kEncodeCommand, &kDecodeCommand};

}  // namespace vento::console
