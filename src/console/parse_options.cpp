#include <CLI/CLI.hpp>
#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "console/commands.h"
#include "console/failure.h"
#include "console/options.h"
#include "console/text_layout.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

using Value = OptionEntry::Value;

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
    return Shorten(Printable(text), kQuotedCharacters);
}

bool HasOption(std::span<const OptionEntry> options, std::string_view name) {
    return std::ranges::find(options, name, &OptionEntry::name) != options.end();
}

[[noreturn]] void RefuseOption(std::string_view name, const CommandEntry* command) {
    std::vector<std::string_view> names;
    for (const OptionEntry& option : CommonOptions())
        names.push_back(option.name);
    for (const CommandEntry* each : kCommands) {
        if (command != nullptr && command != each) continue;
        for (const OptionEntry& option : each->options)
            names.push_back(option.name);
    }
    Refuse({"opzione '{0}' sconosciuta{1}", "unknown option '{0}'{1}"},
           {"--" + Quotable(name), Suggestion(name, names, "--")}, command);
}

Sentence ChoicesOf(const OptionEntry& option) {
    if (option.choices.empty()) return {};
    return Fill({"; si può scegliere fra: {0}", "; it is one of: {0}"}, {std::string(option.choices)});
}

constexpr Phrase kNeedsValue{"manca il valore di {0}", "{0} needs a value"};
constexpr Phrase kTakesNoValue{"{0} non accetta un valore", "{0} takes no value"};

// Has CLI11 parse a command line by the table. All options are the app's and none a command's, since an
// option may stand in front of its command too; behind a command they fall through to the app.
class Parser {
  public:
    Parser() {
        app_.set_help_flag();                     // help is an option of the table
        app_.allow_windows_style_options(false);  // "/path" is a path on every system
        app_.fallthrough();
        app_.require_subcommand(1);
        for (const OptionEntry& option : CommonOptions())
            Declare(option);
        for (const CommandEntry* command : kCommands)
            Declare(*command);
    }

    Options Parse(const std::vector<std::string>& arguments) {
        RefuseEmptyValues(arguments);
        try {
            app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        } catch (const CLI::ArgumentMismatch&) {
            // Any argument can be a value, so the option that lacks one stands last.
            Refuse(kNeedsValue, {Quotable(arguments.back())}, Command());
        } catch (const CLI::RequiredError&) {
            if (!AsksForText()) RefuseMissing();
        } catch (const CLI::ExtrasError&) {
            if (!AsksForText()) RefuseUnknown(FirstUnknown());
        }
        if (AsksForText()) {
            ReplaceCommand();
        } else {
            options_.command = Command();
            CheckCommand(*options_.command);
        }
        return std::move(options_);
    }

  private:
    void Declare(const OptionEntry& option) {
        const std::string name = "--" + std::string(option.name);
        if (app_.get_option_no_throw(name) != nullptr) return;  // another command has it too
        known_.push_back(&option);
        // A flag takes a value behind '=' only; braces hold the one that it has without.
        const bool isFlag = option.value != Value::required;
        const std::string braces = isFlag ? "{" + std::string(kNoValue) + "}" : "";
        std::string names = name + braces;
        if (option.letter != '\0') names += std::string{',', '-', option.letter} + braces;
        CLI::Option* declared = isFlag ? app_.add_flag(names, value_) : app_.add_option(names, value_);
        declared->each(
            [this, &option, declared](const std::string& value) { Take(option, value, declared->count()); });
    }

    void Declare(const CommandEntry& command) {
        for (const OptionEntry& option : command.options)
            Declare(option);
        CLI::App& declared = *app_.add_subcommand(std::string(command.name));
        bool repeats = false;
        for (const ArgumentEntry& argument : command.arguments) {
            CLI::Option& place =
                DeclareWords(declared, argument.name.In(Language::english), options_.arguments);
            place.required(argument.required);
            repeats = argument.repeats;
            if (repeats) place.expected(kMany);
        }
        if (!repeats) DeclareWords(declared, "surplus", surplus_).expected(kMany);
    }

    static CLI::Option& DeclareWords(CLI::App& command, const std::string& name,
                                     std::vector<std::string>& words) {
        const CLI::callback_t take = [&words](const CLI::results_t& results) {
            words.insert(words.end(), results.begin(), results.end());
            return true;
        };
        return *command.add_option(name, take)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }

    // CLI11 takes an empty value behind '=' for none.
    void RefuseEmptyValues(std::span<const std::string> arguments) const {
        for (const std::string& argument : arguments) {
            if (argument == "--") return;
            for (const OptionEntry* option : known_) {
                const std::string name = "--" + std::string(option->name);
                if (argument != name + "=") continue;
                Refuse(option->value == Value::none ? kTakesNoValue : kNeedsValue, {name}, nullptr);
            }
        }
    }

    void Take(const OptionEntry& option, const std::string& value, std::size_t count) {
        const Sentence name = "--" + std::string(option.name);
        const bool hasValue = value != kNoValue;
        if (option.value == Value::none) {
            if (hasValue) Refuse(kTakesNoValue, {name}, Command());
        } else {
            if (count > 1) Refuse({"{0} compare due volte", "{0} is given twice"}, {name}, Command());
            if (value.empty()) Refuse(kNeedsValue, {name}, Command());
        }
        if (!option.take(options_, hasValue ? value : "")) {
            Refuse({"{0} non può essere '{1}'{2}", "{0} can't be '{1}'{2}"},
                   {name, Quotable(value), ChoicesOf(option)}, Command());
        }
    }

    [[nodiscard]] const CommandEntry* Command() const {
        const auto commands = app_.get_subcommands();
        return commands.empty() ? nullptr : FindCommand(commands.front()->get_name());
    }

    // The help or the version, for which nothing need be missing.
    [[nodiscard]] bool AsksForText() const { return options_.help || options_.version; }

    void ReplaceCommand() {
        const CommandEntry* command = Command();
        options_.arguments.clear();
        if (options_.help && command != nullptr) options_.arguments.emplace_back(command->name);
        options_.command = options_.help ? &kHelpCommand : &kVersionCommand;
    }

    [[nodiscard]] std::string FirstUnknown() const {
        const auto unknown = app_.remaining();
        const auto first = std::ranges::find_if(unknown, [](const auto& word) { return word != "--"; });
        return first != unknown.end() ? *first : std::string{};
    }

    [[noreturn]] void RefuseUnknown(const std::string& word) const {
        if (word.size() < 2 || word[0] != '-') RefuseCommand(word);
        if (word[1] == '-') RefuseOption(std::string_view(word).substr(2, word.find('=') - 2), Command());
        Refuse({"opzione '{0}' sconosciuta", "unknown option '{0}'"}, {Quotable(word)}, Command());
    }

    [[noreturn]] void RefuseMissing() const {
        const std::string unknown = FirstUnknown();
        if (!unknown.empty()) RefuseUnknown(unknown);
        const CommandEntry* command = Command();
        if (command == nullptr) Refuse({"manca il comando", "the command is missing"}, {}, nullptr);
        Refuse({"{0}: manca {1}", "{0}: {1} is missing"},
               {std::string(command->name), command->arguments[options_.arguments.size()].name}, command);
    }

    void CheckCommand(const CommandEntry& command) const {
        for (const CLI::Option* given :
             app_.get_options([](const auto* each) { return each->count() > 0; })) {
            const std::string& name = given->get_lnames().front();
            if (HasOption(CommonOptions(), name) || HasOption(command.options, name)) continue;
            Refuse({"{0} non ha l'opzione '--{1}'", "{0} has no option '--{1}'"},
                   {std::string(command.name), name}, &command);
        }
        if (!surplus_.empty()) {
            Refuse({"{0}: '{1}' è di troppo", "{0}: '{1}' is one argument too many"},
                   {std::string(command.name), Quotable(surplus_.front())}, &command);
        }
    }

    // Of an unlimited number CLI11 would take an argument like "[a,b]" apart.
    static constexpr int kMany = 1 << 20;

    // What a flag has that stands alone: no argument can hold it.
    static constexpr std::string_view kNoValue{"\0", 1};

    CLI::App app_;
    std::vector<const OptionEntry*> known_;
    Options options_;
    std::string value_;                 // of the option last seen, which CLI11 wants a place for
    std::vector<std::string> surplus_;  // arguments beyond those that the command has
};

}  // namespace

void RefuseCommand(const std::string& name) {
    std::vector<std::string_view> names;
    names.reserve(kCommands.size());
    for (const CommandEntry* command : kCommands)
        names.push_back(command->name);
    Refuse({"comando '{0}' sconosciuto{1}", "unknown command '{0}'{1}"},
           {Quotable(name), Suggestion(name, names)}, nullptr);
}

Options ParseOptions(const std::vector<std::string>& arguments) {
    return Parser().Parse(arguments);
}

}  // namespace vento::console
