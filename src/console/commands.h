#pragma once

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

#include "console/options.h"
#include "text/language.h"

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
    Language language;
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
        if (!diagnostic.empty() && !sentence.empty()) diagnostic += ' ';
        diagnostic += sentence;
    }
};

/// An option of the command line. One that several commands have takes a value in all of them or in none.
struct OptionEntry {
    enum class Value : std::uint8_t { none, required, behindEquals };
    std::string_view name;  ///< without the dashes
    char letter = '\0';     ///< its short form, or NUL
    Value value = Value::none;
    Phrase valueName;
    Phrase summary;
    /// Notes the value in the options; false if it is not one that the option takes.
    bool (*take)(Options& options, std::string_view value);
    std::string_view choices = {};  ///< the values, parted by blanks; empty where it is any
};

/// What stands behind a command.
struct ArgumentEntry {
    Phrase name;
    Phrase summary;
    bool required = true;
    bool repeats = false;           ///< any number of it, which the last argument alone may have
    std::string_view choices = {};  ///< as with OptionEntry
};

struct Example {
    std::string_view line;  ///< without the program's name
    Phrase meaning;
};

/// A command of the program.
struct CommandEntry {
    std::string_view name;
    Phrase summary;
    std::span<const ArgumentEntry> arguments;
    std::span<const OptionEntry> options;
    std::span<const Example> examples;
    /// Throws Failure, EndedAtOnce, and whatever is unforeseen.
    void (*run)(const Console& console, Answer& answer);
};

extern const CommandEntry kProgramCommand;
extern const CommandEntry kVerifyCommand;
extern const CommandEntry kPlanCommand;
extern const CommandEntry kReadCommand;
extern const CommandEntry kCheckCommand;
extern const CommandEntry kDevicesCommand;
extern const CommandEntry kConvertCommand;
extern const CommandEntry kDiffCommand;
extern const CommandEntry kExplainCommand;
extern const CommandEntry kEncodeCommand;
extern const CommandEntry kDecodeCommand;
extern const CommandEntry kInfoCommand;
extern const CommandEntry kCompletionCommand;
extern const CommandEntry kHelpCommand;
extern const CommandEntry kVersionCommand;

/// All commands, in the order in which the help names them.
inline constexpr std::array kCommands{
    &kProgramCommand, &kVerifyCommand,  &kPlanCommand,       &kReadCommand, &kCheckCommand,
    &kDevicesCommand, &kExplainCommand, &kConvertCommand,    &kDiffCommand, &kEncodeCommand,
    &kDecodeCommand,  &kInfoCommand,    &kCompletionCommand, &kHelpCommand, &kVersionCommand};

/// Options that several commands have.
inline constexpr OptionEntry kLogOption{
    "log",
    '\0',
    OptionEntry::Value::required,
    {"FILE", "FILE"},
    {"Aggiunge a FILE una riga JSON per ogni telecomando: quando, che cosa, con quale esito",
     "Add a line of JSON to FILE for each remote: when, what, with what outcome"},
    [](Options& options, std::string_view value) {
        options.log = value;
        return true;
    }};
inline constexpr OptionEntry kTransmitterOption{
    "transmitter",
    '\0',
    OptionEntry::Value::required,
    {"PERCORSO", "PATH"},
    {"Usa il trasmettitore con questo percorso, come lo elenca devices, invece del primo",
     "Use the transmitter with this path, as devices lists it, in place of the first"},
    [](Options& options, std::string_view value) {
        options.transmitter = value;
        return true;
    }};

/// The options that every command has.
[[nodiscard]] std::span<const OptionEntry> CommonOptions();

/// The command of this name; null if there is none.
[[nodiscard]] const CommandEntry* FindCommand(std::string_view name);

}  // namespace vento::console
