#include "console/options.h"

#include <algorithm>
#include <array>
#include <span>

#include "console/commands.h"
#include "panel/message_table.h"
#include "platform/native.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

using Value = OptionEntry::Value;

constexpr Phrase kNoName{"", ""};
constexpr Phrase kFile{"FILE", "FILE"};

constexpr std::array kCommonOptions{
    OptionEntry{"simulate",
                '\0',
                Value::behindEquals,
                {"SCENARIO", "SCENARIO"},
                {"Lavora con un trasmettitore e un telecomando simulati, semplici o come dice il file "
                 "SCENARIO, che può essere una traccia",
                 "Work on a simulated transmitter and remote, plain or as the file SCENARIO says, which may "
                 "be a trace"},
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

}  // namespace

std::span<const OptionEntry> CommonOptions() {
    return kCommonOptions;
}

const CommandEntry* FindCommand(std::string_view name) {
    const auto* const found = std::ranges::find(kCommands, name, &CommandEntry::name);
    return found != kCommands.end() ? *found : nullptr;
}

std::optional<Language> LanguageNamed(std::string_view name) {
    if (SameButForCase(name, "it") || SameButForCase(name, "ita")) return Language::italian;
    if (SameButForCase(name, "en") || SameButForCase(name, "eng")) return Language::english;
    return std::nullopt;
}

Language LanguageFor(std::span<const char* const> arguments) {
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

}  // namespace vento::console
