#include "command.h"

namespace vento::fuzzing {
namespace {

using console::kCommands;
using console::OptionEntry;
using console::Options;

std::vector<const OptionEntry*> AllOptions() {
    std::vector<const OptionEntry*> all;
    for (const OptionEntry& option : console::CommonOptions())
        all.push_back(&option);
    for (const auto* command : kCommands) {
        for (const OptionEntry& option : command->options)
            all.push_back(&option);
    }
    return all;
}

/// Words of a command line: the names that there are, changed or not, with or without a value, and any other.
std::vector<std::string> TakeWords(FuzzedDataProvider& data) {
    static const std::vector<const OptionEntry*> kOptions = AllOptions();
    std::vector<std::string> words;
    while (data.remaining_bytes() > 0 && words.size() < 40) {
        const auto kind = data.ConsumeIntegral<std::uint8_t>();
        const auto which = data.ConsumeIntegral<std::uint8_t>();
        const OptionEntry& option = *kOptions[which % kOptions.size()];
        std::string& word = words.emplace_back();
        if (kind % 4 == 0) word = kCommands.at(which % kCommands.size())->name;
        if (kind % 4 == 1) word = "--" + std::string(option.name);
        if (kind % 4 == 2 && option.letter != '\0') word = {'-', option.letter};
        if (kind % 8 == 7) word = data.PickValueInArray({"bash", "zsh", "fish", "it", "--", "-"});
        if ((kind & 16U) != 0 && !word.empty()) word += '=';
        if (word.empty() || (kind & 32U) != 0) word += data.ConsumeRandomLengthString(60);
        std::erase(word, '\0');  // no argument holds one
    }
    return words;
}

/// The same options, spelled out: each behind its name, in front of the command, and no argument taken for
/// one.
std::vector<std::string> SpellOut(const Options& o) {
    std::vector<std::string> words;
    const auto flag = [&](const char* name, bool is) {
        if (is) words.push_back(name);
    };
    const auto value = [&](const std::string& name, const std::optional<std::string>& text) {
        if (text) words.push_back(text->empty() ? name : name + "=" + *text);
    };
    flag("--consume", o.consume);
    flag("--strict", o.strict);
    flag("--verify", o.verify);
    flag("--force", o.force);
    flag("--json", o.json);
    flag("--quiet", o.quiet);
    flag("--verbose", o.verbose);
    value("--log", o.log);
    value("--transmitter", o.transmitter);
    value("--key", o.key);
    value("--simulate", o.simulate);
    value("--trace", o.trace);
    if (o.language) value("--language", *o.language == Language::italian ? "it" : "en");
    if (o.series) value("--series", std::to_string(*o.series));
    words.emplace_back(o.command->name);
    words.emplace_back("--");
    words.insert(words.end(), o.arguments.begin(), o.arguments.end());
    return words;
}

void Try(const std::vector<std::string>& words) {
    std::vector<const char*> arguments(words.size());
    std::ranges::transform(words, arguments.begin(), &std::string::c_str);
    (void)console::LanguageFor(arguments);
    const Options options = console::ParseOptions(words);
    Require(options.command != nullptr, "a command line that is taken has a command");
    const auto& places = options.command->arguments;
    const bool repeats = !places.empty() && places.back().repeats;
    Require(repeats || options.arguments.size() <= places.size(), "no argument is one too many");
    Require(static_cast<std::size_t>(std::ranges::count(places, true, &console::ArgumentEntry::required)) <=
                options.arguments.size(),
            "no argument that must be there is missing");
    const auto spelledOut = SpellOut(options);
    if (!options.sections && !options.remoteVersion && (!options.series || *options.series > 0)) {
        Require(SpellOut(console::ParseOptions(spelledOut)) == spelledOut, "spelled out it is the same");
    }
    const bool onlyTells = options.command == &console::kHelpCommand ||
                           options.command == &console::kVersionCommand ||
                           options.command == &console::kCompletionCommand;
    if (onlyTells) RequireHarmless(RunCommand(*options.command, "", {0, 64}, options.arguments).text);
}

}  // namespace
}  // namespace vento::fuzzing

/// A command line: it is taken for what it says, or refused as wrong usage with a reason.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vento::fuzzing;
    FuzzedDataProvider provider(data, size);
    try {
        Try(TakeWords(provider));
    } catch (const vento::console::Failure& failure) {
        Require(failure.Status() == vento::console::kWrongUsage, "what makes no sense is wrong usage");
        RequireReadable(failure.Reason());
        RequireHarmless(failure.Reason().In(vento::Language::english));
    }
    return 0;
}
