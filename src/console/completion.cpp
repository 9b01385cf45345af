#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "console/commands.h"
#include "console/failure.h"

/// What a shell needs to complete a command line, made of the table by which the command line is parsed.
namespace vento::console {
namespace {

using Value = OptionEntry::Value;

constexpr std::array kCompletionArguments{ArgumentEntry{
    {"SHELL", "SHELL"}, {"bash, zsh o fish", "bash, zsh or fish"}, true, false, "bash zsh fish"}};

constexpr std::array kCompletionExamples{
    Example{"completion bash > ~/.local/share/bash-completion/completions/ventoctl",
            {"Per bash, dalla prossima sessione.", "For bash, from the next session on."}},
};

// `text` with a backslash in front of each of `special`, between single quotes.
std::string Quoted(std::string_view text, std::string_view special = {}) {
    std::string quoted = "'";
    for (const char character : text) {
        if (special.find(character) != std::string_view::npos) quoted += '\\';
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quoted + "'";
}

std::string CommandNames() {
    std::string names;
    for (const CommandEntry* command : kCommands)
        names += (names.empty() ? "" : " ") + std::string(command->name);
    return names;
}

// The words that the arguments of a command may be; empty where they are files.
std::string WordsOf(const CommandEntry& command) {
    if (&command == &kHelpCommand) return CommandNames();
    return command.arguments.empty() ? std::string{} : std::string(command.arguments.front().choices);
}

std::string SpelledOut(std::span<const OptionEntry> options) {
    std::string words;
    for (const OptionEntry& option : options) {
        words += " --" + std::string(option.name) + (option.value == Value::behindEquals ? "=" : "");
        if (option.letter != '\0') words += std::string{' ', '-', option.letter};
    }
    return words;
}

// --- bash ---

std::string BashValues() {
    std::string cases;
    for (const CommandEntry* command : kCommands) {
        for (const std::span<const OptionEntry> options : {CommonOptions(), command->options}) {
            for (const OptionEntry& option : options) {
                const std::string one = "        --" + std::string(option.name) +
                                        ") COMPREPLY=($(compgen -W '" + std::string(option.choices) +
                                        "' -- \"$cur\")); return ;;\n";
                if (option.value == Value::required &&
                    cases.find("--" + std::string(option.name) + ")") == std::string::npos) {
                    cases += one;
                }
            }
        }
    }
    return cases;
}

std::string Bash(Language /*language*/) {
    std::string text = R"(_ventoctl() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command='' word words=''
    COMPREPLY=()
    case $prev in
        =) return ;;
)" + BashValues() + R"(    esac
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case " )" + CommandNames() +
                       R"( " in *" $word "*) command=$word; break ;; esac
    done
    case $command in
        '') [[ $cur == -* ]] || words=')" +
                       CommandNames() + R"(' ;;
)";
    for (const CommandEntry* command : kCommands) {
        const std::string words = WordsOf(*command);
        text += "        " + std::string(command->name) + ") [[ $cur == -* ]] && words='" +
                SpelledOut(command->options) + "'";
        if (!words.empty()) text += " || words='" + words + "'";
        text += " ;;\n";
    }
    return text + R"(    esac
    [[ $cur == -* ]] && words+=')" +
           SpelledOut(CommonOptions()) + R"('
    [[ -n $words ]] || return
    COMPREPLY=($(compgen -W "$words" -- "$cur"))
    [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null
    return 0
}
complete -o default -F _ventoctl ventoctl
)";
}

// --- zsh ---

std::string ZshOption(const OptionEntry& option, Language language) {
    const std::string summary = "[" + option.summary.In(language) + "]";
    constexpr std::string_view kSpecial = ":";
    const std::string action = option.choices.empty() ? ":_files" : ":(" + std::string(option.choices) + ")";
    std::string argument = "--" + std::string(option.name);
    if (option.value == Value::required) {
        return Quoted(argument + "=") + Quoted(summary, kSpecial) + "':" + option.valueName.In(language) +
               action + "'";
    }
    if (option.value == Value::behindEquals) {
        return Quoted(argument + "=-") + Quoted(summary, kSpecial) + "'::" + option.valueName.In(language) +
               action + "'";
    }
    if (option.letter == '\0') return Quoted(argument) + Quoted(summary, kSpecial);
    const std::string letter = std::string{'-', option.letter};
    return "'(" + letter + " " + argument + ")'{" + letter + "," + argument + "}" + Quoted(summary, kSpecial);
}

std::string ZshOptions(std::span<const OptionEntry> options, Language language) {
    std::string text;
    for (const OptionEntry& option : options)
        text += " \\\n        " + ZshOption(option, language);
    return text;
}

std::string Zsh(Language language) {
    std::string text =
        "#compdef ventoctl\n_ventoctl() {\n    local context state line\n    local -a commands common\n    "
        "commands=(\n";
    for (const CommandEntry* command : kCommands)
        text += "        " + Quoted(command->name) + ":" + Quoted(command->summary.In(language), ":") + "\n";
    text += "    )\n    common=(" + ZshOptions(CommonOptions(), language) + "\n    )\n";
    text +=
        "    _arguments -C $common[@] '1: :->command' '*:: :->argument'\n    case $state in\n"
        "    command) _describe -t commands command commands ;;\n    argument)\n        case $words[1] in\n";
    for (const CommandEntry* command : kCommands) {
        const std::string words = WordsOf(*command);
        text += "        " + std::string(command->name) + ") _arguments $common[@]" +
                ZshOptions(command->options, language);
        if (!command->arguments.empty())
            text += " '*: :" + (words.empty() ? std::string("_files") : "(" + words + ")") + "'";
        text += " ;;\n";
    }
    return text +
           "        esac ;;\n    esac\n}\n"
           "if [ \"$funcstack[1]\" = _ventoctl ]; then _ventoctl \"$@\"; else compdef _ventoctl ventoctl; "
           "fi\n";
}

// --- fish ---

std::string FishOptions(std::span<const OptionEntry> options, const std::string& condition,
                        Language language) {
    std::string text;
    for (const OptionEntry& option : options) {
        if (option.value == Value::behindEquals) {  // what stands behind the option is no value of it
            const std::string name(option.name);
            text.append("complete -c ventoctl -n 'string match -q -- \"--").append(name);
            text.append("=*\" (commandline -ct)' -l ").append(name).append(" -r\n");
        }
        text += "complete -c ventoctl" + condition + " -l " + std::string(option.name);
        if (option.letter != '\0') text += std::string(" -s ") + option.letter;
        if (option.value == Value::required)
            text += option.choices.empty() ? " -r" : " -x -a " + Quoted(option.choices);
        text += " -d " + Quoted(option.summary.In(language), "\\") + "\n";
    }
    return text;
}

std::string Fish(Language language) {
    const std::string first = " -n __fish_use_subcommand";
    std::string text = "complete -c ventoctl" + first + " -f\n";
    for (const CommandEntry* command : kCommands) {
        text += "complete -c ventoctl" + first + " -a " + std::string(command->name) + " -d " +
                Quoted(command->summary.In(language), "\\") + "\n";
    }
    text += FishOptions(CommonOptions(), "", language);
    for (const CommandEntry* command : kCommands) {
        const std::string own = " -n '__fish_seen_subcommand_from " + std::string(command->name) + "'";
        const std::string words = WordsOf(*command);
        if (!words.empty()) text += "complete -c ventoctl" + own + " -f -a " + Quoted(words) + "\n";
        if (command->arguments.empty()) text += "complete -c ventoctl" + own + " -f\n";
        text += FishOptions(command->options, own, language);
    }
    return text;
}

struct Shell {
    std::string_view name;
    std::string (*script)(Language language);
};
constexpr std::array kShells{Shell{"bash", Bash}, Shell{"zsh", Zsh}, Shell{"fish", Fish}};

void RunCompletion(const Console& console, Answer& answer) {
    answer.fields["script"] = nullptr;
    const std::string name = console.options.Argument(0);
    const auto* const shell = std::ranges::find(kShells, name, &Shell::name);
    if (shell == kShells.end()) {
        throw Failure(kWrongUsage, Fill({"SHELL può essere {0}, non '{1}'", "SHELL is one of {0}, not '{1}'"},
                                        {kCompletionArguments[0].choices, name}));
    }
    answer.text = shell->script(console.language);
    answer.fields["script"] = answer.text;
}

}  // namespace

constinit const CommandEntry kCompletionCommand{"completion",
                                                {"Scrive ciò che serve a una shell per completare i comandi",
                                                 "Print what a shell needs to complete commands"},
                                                kCompletionArguments,
                                                {},
                                                kCompletionExamples,
                                                RunCompletion};

}  // namespace vento::console
