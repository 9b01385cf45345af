#include "console/options.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <set>

#include "console/commands.h"
#include "console/failure.h"
#include "console/text_layout.h"
#include "panel/message_table.h"
#include "platform/native.h"

namespace vento::console {
namespace {

using Value = OptionEntry::Value;

constexpr Phrase kNoName{"", ""};
constexpr Phrase kFile{"FILE", "FILE"};

constexpr std::array kCommonOptions{
    OptionEntry{
        "simulate",
        '\0',
        Value::behindEquals,
        {"SCENARIO", "SCENARIO"},
        {"Lavora con un trasmettitore e un telecomando simulati, semplici o come dice il file SCENARIO",
         "Work on a simulated transmitter and remote, plain or as the file SCENARIO says"},
        [](Options& options, std::string_view value) {
            options.simulate = value;
            return true;
        }},
    OptionEntry{"language",
                '\0',
                Value::required,
                {"LINGUA", "LANGUAGE"},
                {"Parla questa lingua invece di quella del sistema: it, ita, en o eng",
                 "Speak this language instead of the desktop's: it, ita, en or eng"},
                [](Options& options, std::string_view value) {
                    options.language = LanguageNamed(value);
                    return options.language.has_value();
                },
                "ita eng"},
    OptionEntry{"trace",
                '\0',
                Value::required,
                kFile,
                {"Scrive in FILE ogni passo sul collegamento, una riga JSON ciascuno",
                 "Write each step on the link to FILE, a line of JSON each"},
                [](Options& options, std::string_view value) {
                    options.trace = value;
                    return true;
                }},
    OptionEntry{"json",
                '\0',
                Value::none,
                kNoName,
                {"Dà i risultati come un solo oggetto JSON", "Give the results as one JSON object"},
                [](Options& options, std::string_view) { return options.json = true; }},
    OptionEntry{"quiet",
                'q',
                Value::none,
                kNoName,
                {"Non dice altro che i risultati e gli errori", "Say nothing but results and errors"},
                [](Options& options, std::string_view) { return options.quiet = true; }},
    OptionEntry{"verbose",
                'v',
                Value::none,
                kNoName,
                {"Dice anche i dettagli utili all'assistenza", "Say the details that support needs, too"},
                [](Options& options, std::string_view) { return options.verbose = true; }},
    OptionEntry{"help",
                'h',
                Value::none,
                kNoName,
                {"Mostra l'aiuto ed esce", "Print the help and exit"},
                [](Options& options, std::string_view) { return options.help = true; }},
    OptionEntry{"version",
                'V',
                Value::none,
                kNoName,
                {"Mostra la versione ed esce", "Print the version and exit"},
                [](Options& options, std::string_view) { return options.version = true; }},
};

// Edits that turn one word into another: a character more, less or different, or two changed over.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> edits(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                edits[i][j] = i + j;
                continue;
            }
            const bool same = a[i - 1] == b[j - 1];
            edits[i][j] =
                std::min({edits[i - 1][j] + 1, edits[i][j - 1] + 1, edits[i - 1][j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
        }
    }
    return edits[a.size()][b.size()];
}

// "; did you mean '--trace'?", or nothing if no name is near.
Sentence Suggestion(std::string_view wrong, const std::vector<std::string_view>& names,
                    const std::string& prefix = {}) {
    std::string_view nearest;
    std::size_t least = 1 + std::max<std::size_t>(2, std::min<std::size_t>(wrong.size(), 40) / 3);
    for (const std::string_view name : names) {
        const std::size_t distance = Distance(wrong.substr(0, 40), name);
        if (distance < least) {
            least = distance;
            nearest = name;
        }
    }
    if (nearest.empty()) return {};
    return Fill({"; forse si intendeva '{0}'?", "; did you mean '{0}'?"}, {prefix + std::string(nearest)});
}

[[noreturn]] void Refuse(const Phrase& pattern, std::initializer_list<Sentence> values,
                         const CommandEntry* command) {
    const std::string help =
        command != nullptr ? "ventoctl help " + std::string(command->name) : "ventoctl help";
    throw Failure(kWrongUsage, Fill(pattern, values), Fill({"Aiuto: {0}", "Help: {0}"}, {help}));
}

std::string Quotable(std::string_view text) {
    return Shorten(Printable(text), 40);
}

const OptionEntry* Find(std::span<const OptionEntry> options, const auto& isMeant) {
    const auto found = std::ranges::find_if(options, isMeant);
    return found != options.end() ? &*found : nullptr;
}

const OptionEntry* FindAnywhere(const auto& isMeant) {
    if (const auto* option = Find(kCommonOptions, isMeant)) return option;
    for (const CommandEntry* command : kCommands) {
        if (const auto* option = Find(command->options, isMeant)) return option;
    }
    return nullptr;
}

// Goes through the arguments once. Which command an option belongs to shows only at the end, since options
// may stand in front of it.
class Parser {
  public:
    explicit Parser(std::span<const std::string> arguments) : rest_(arguments) {}

    Options Parse() {
        while (!rest_.empty()) {
            const std::string argument = Next();
            if (onlyWords_ || argument.size() < 2 || argument[0] != '-') {
                TakeWord(argument);
            } else if (argument == "--") {
                onlyWords_ = true;
            } else if (argument[1] == '-') {
                TakeLong(std::string_view(argument).substr(2));
            } else {
                TakeLetters(std::string_view(argument).substr(1));
            }
        }
        return Finish();
    }

  private:
    std::string Next() {
        const std::string next = rest_.front();
        rest_ = rest_.subspan(1);
        return next;
    }

    void TakeWord(const std::string& word) {
        if (options_.command != nullptr) {
            options_.arguments.push_back(word);
            return;
        }
        options_.command = FindCommand(word);
        if (options_.command != nullptr) return;
        RefuseCommand(word);
    }

    void TakeLong(std::string_view argument) {
        const auto equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        const auto* option = FindAnywhere([&](const OptionEntry& each) { return each.name == name; });
        if (option == nullptr) RefuseUnknown(name);
        if (equals == std::string_view::npos) {
            TakeOption(*option, std::nullopt);
        } else {
            TakeOption(*option, std::string(argument.substr(equals + 1)));
        }
    }

    void TakeLetters(std::string_view letters) {
        for (const char letter : letters) {
            const auto* option = FindAnywhere([&](const OptionEntry& each) { return each.letter == letter; });
            if (option == nullptr) {
                Refuse({"opzione '{0}' sconosciuta", "unknown option '{0}'"}, {"-" + Quotable(letters)},
                       options_.command);
            }
            TakeOption(*option, std::nullopt);
        }
    }

    void TakeOption(const OptionEntry& option, std::optional<std::string> value) {
        const Sentence name = "--" + std::string(option.name);
        if (option.value == Value::none) {
            if (value) Refuse({"{0} non accetta un valore", "{0} takes no value"}, {name}, options_.command);
        } else {
            if (!value && option.value == Value::required && !rest_.empty()) value = Next();
            const bool missing = value ? value->empty() : option.value == Value::required;
            if (missing) Refuse({"manca il valore di {0}", "{0} needs a value"}, {name}, options_.command);
            if (given_.contains(option.name))
                Refuse({"{0} compare due volte", "{0} is given twice"}, {name}, options_.command);
        }
        given_.insert(option.name);
        if (!option.take(options_, value.value_or(""))) {
            Refuse({"{0} non può essere '{1}'{2}", "{0} can't be '{1}'{2}"},
                   {name, Quotable(*value), ChoicesOf(option)}, options_.command);
        }
    }

    static Sentence ChoicesOf(const OptionEntry& option) {
        if (option.choices.empty()) return {};
        return Fill({"; si può scegliere fra: {0}", "; it is one of: {0}"}, {std::string(option.choices)});
    }

    [[noreturn]] void RefuseUnknown(std::string_view name) const {
        std::vector<std::string_view> names;
        for (const OptionEntry& option : kCommonOptions)
            names.push_back(option.name);
        for (const CommandEntry* command : kCommands) {
            if (options_.command != nullptr && options_.command != command) continue;
            for (const OptionEntry& option : command->options)
                names.push_back(option.name);
        }
        Refuse({"opzione '{0}' sconosciuta{1}", "unknown option '{0}'{1}"},
               {"--" + Quotable(name), Suggestion(name, names, "--")}, options_.command);
    }

    Options Finish() {
        if (options_.help || options_.version) {
            options_.arguments.clear();
            if (options_.help && options_.command != nullptr)
                options_.arguments.emplace_back(options_.command->name);
            options_.command = options_.help ? &kHelpCommand : &kVersionCommand;
            return std::move(options_);
        }
        const CommandEntry* command = options_.command;
        if (command == nullptr) Refuse({"manca il comando", "the command is missing"}, {}, nullptr);
        for (const std::string_view name : given_) {
            const auto isMeant = [&](const OptionEntry& each) { return each.name == name; };
            if (Find(kCommonOptions, isMeant) != nullptr || Find(command->options, isMeant) != nullptr)
                continue;
            Refuse({"{0} non ha l'opzione '--{1}'", "{0} has no option '--{1}'"},
                   {std::string(command->name), std::string(name)}, command);
        }
        CountArguments(*command);
        return std::move(options_);
    }

    void CountArguments(const CommandEntry& command) const {
        const std::size_t count = options_.arguments.size();
        const bool repeats = !command.arguments.empty() && command.arguments.back().repeats;
        if (count > command.arguments.size() && !repeats) {
            Refuse({"{0}: '{1}' è di troppo", "{0}: '{1}' is one argument too many"},
                   {std::string(command.name), Quotable(options_.arguments[command.arguments.size()])},
                   &command);
        }
        if (count < command.arguments.size() && command.arguments[count].required) {
            Refuse({"{0}: manca {1}", "{0}: {1} is missing"},
                   {std::string(command.name), command.arguments[count].name}, &command);
        }
    }

    std::span<const std::string> rest_;
    Options options_;
    std::set<std::string_view> given_;
    bool onlyWords_ = false;
};

}  // namespace

std::span<const OptionEntry> CommonOptions() {
    return kCommonOptions;
}

const CommandEntry* FindCommand(std::string_view name) {
    const auto found = std::ranges::find(kCommands, name, &CommandEntry::name);
    return found != kCommands.end() ? *found : nullptr;
}

std::optional<Language> LanguageNamed(std::string_view name) {
    std::string lower(name);
    for (char& letter : lower) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    }
    if (lower == "it" || lower == "ita") return Language::italian;
    if (lower == "en" || lower == "eng") return Language::english;
    return std::nullopt;
}

Language LanguageFor(const std::vector<std::string>& arguments) {
    constexpr std::string_view kOption = "--language";
    std::optional<Language> chosen;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument == kOption && i + 1 < arguments.size()) chosen = LanguageNamed(arguments[i + 1]);
        if (argument.starts_with(kOption) && argument.substr(kOption.size()).starts_with('='))
            chosen = LanguageNamed(argument.substr(kOption.size() + 1));
    }
    return chosen ? *chosen : LanguageFromAbbreviation(platform::NativeLanguageAbbreviation().value_or(""));
}

void RefuseCommand(const std::string& name) {
    std::vector<std::string_view> names;
    for (const CommandEntry* command : kCommands)
        names.push_back(command->name);
    Refuse({"comando '{0}' sconosciuto{1}", "unknown command '{0}'{1}"},
           {Quotable(name), Suggestion(name, names)}, nullptr);
}

Options ParseOptions(const std::vector<std::string>& arguments) {
    return Parser(arguments).Parse();
}

}  // namespace vento::console
