#include "console/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "console/commands.h"
#include "console/failure.h"

namespace vento::console {
namespace {

constexpr const char* kDescription = "Puts code tables into a remote control, and reads them back.";

constexpr const char* kFooter =
    "Exit status:\n"
    "  0        done\n"
    "  2        no transmitter\n"
    "  3 to 21  another failure of the operation, told by its message\n"
    "  64       wrong usage\n"
    "  65       a programme, scenario or key that can't be used; an error of the codec\n"
    "  66       an input file that can't be read\n"
    "  70       anything unforeseen\n"
    "  73       results, a trace, an image or another file that can't be written\n"
    "  130      ended at once by a second Ctrl-C; 128 + n by signal n\n"
    "\n"
    "Results go to standard output, everything else to standard error. Ctrl-C cancels\n"
    "the wait for the remote. Colours are left out where NO_COLOR is set.\n";

// What CLI11 shows as the name of a flag that may have a value, and what people know it as; of the same width
// together with the blanks behind it.
constexpr std::string_view kFlagAsDeclared = "--simulate{}         ";
constexpr std::string_view kFlagAsKnown = "--simulate[=SCENARIO]";

struct Texts {
    std::string language;
    std::string trace;
    std::string simulate;
};

struct CommonOptions {
    CLI::Option* language = nullptr;
    CLI::Option* trace = nullptr;
    CLI::Option* simulate = nullptr;
};

CommonOptions DeclareCommon(CLI::App& app, Options& options, Texts& texts) {
    CommonOptions common;
    // A flag takes a value behind '=' only, so that the word behind it is still the command's. The braces
    // hold its value where there is none.
    common.simulate =
        app.add_flag("--simulate{}", texts.simulate, "Work on a simulated transmitter and remote");
    common.language =
        app.add_option("--language", texts.language, "Speak this language instead of the desktop's")
            ->check(CLI::IsMember({"ita", "eng"}).description(""))
            ->type_name("ita|eng");
    common.trace =
        app.add_option("--trace", texts.trace, "Write each step on the link to FILE, as JSON lines")
            ->type_name("FILE");
    app.add_flag("--json", options.json, "Give the results as one JSON object");
    app.add_flag("--quiet", options.quiet, "Say nothing but results and errors");
    app.set_version_flag("--version", "ventoctl " VENTO_VERSION, "Print the version and exit");
    return common;
}

LastWord LastWordOf(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream complaint;
    if (app.exit(error, out, complaint) != 0) return {kWrongUsage, "ventoctl: " + complaint.str()};
    std::string text = out.str();
    if (const auto at = text.find(kFlagAsDeclared); at != std::string::npos) {
        text.replace(at, kFlagAsDeclared.size(), kFlagAsKnown);
    }
    return {0, text};
}

}  // namespace

std::variant<Options, LastWord> ParseOptions(std::vector<std::string> arguments) {
    CLI::App app(kDescription, "ventoctl");
    Options options;
    Texts texts;
    const CommonOptions common = DeclareCommon(app, options, texts);
    app.require_subcommand(1);
    // The commands inherit these: options may stand behind a command too, and "/path" is a path on every
    // system.
    app.fallthrough();
    app.allow_windows_style_options(false);
    app.footer(kFooter);
    for (const CommandEntry* entry : kCommands) {
        CLI::App* command = app.add_subcommand(std::string(entry->name), std::string(entry->summary));
        command->callback([&options, entry] { options.command = entry; });
        command->footer("The options that every command has are those of ventoctl --help.");
        entry->declare(*command, options);
    }
    try {
        std::ranges::reverse(arguments);  // as CLI11 wants them
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return LastWordOf(app, error);
    }
    if (common.simulate->count() > 0) options.simulate = texts.simulate;
    if (common.trace->count() > 0) options.trace = texts.trace;
    if (common.language->count() > 0) {
        options.language = texts.language == "ita" ? Language::italian : Language::english;
    }
    return options;
}

}  // namespace vento::console
