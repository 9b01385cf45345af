#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <span>
#include <system_error>

#include "console/commands.h"
#include "console/failure.h"
#include "console/notices.h"
#include "console/options.h"
#include "platform/file_error.h"
#include "platform/terminal.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;
using platform::Terminal;

constexpr Phrase kUnforeseenPhrase{"È successo qualcosa di imprevisto: {0}",
                                   "Something unforeseen has happened: {0}"};

std::string JsonOf(const CommandEntry& command, const Answer& answer) {
    ordered_json object = {{"operation", command.name}, {"diagnostic", nullptr}};
    if (!answer.diagnostic.empty()) object["diagnostic"] = answer.diagnostic;
    object.update(answer.fields);
    // Paths are what the file system says they are, not always UTF-8.
    return object.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

void Fail(const Failure& failure, Notices& notices, Answer& answer) {
    answer.status = failure.Status();
    answer.Diagnose(failure.what());
    notices.Error(failure.Reason(), failure.Hint());
}

int RunCommand(const Options& options, const Terminal& terminal, Language language) {
    Notices notices(terminal, language, options.quiet, options.verbose);
    Answer answer;
    try {
        options.command->run({options, terminal, notices, language}, answer);
    } catch (const EndedAtOnce& end) {
        return end.status;
    } catch (const Failure& failure) {
        Fail(failure, notices, answer);
    } catch (const std::exception& error) {
        Fail(Failure(kUnforeseen, Fill(kUnforeseenPhrase, {ReasonOf(error)})), notices, answer);
    }
    if (WriteResults(options.json ? JsonOf(*options.command, answer) : answer.text)) return answer.status;
    notices.Error(Fill({"I risultati non si possono scrivere: {0}.", "The results can't be written: {0}."},
                       {platform::SystemReason({errno, std::generic_category()})}));
    return kFailedOutput;
}

// The console program from its arguments (UTF-8, without the program's name) to its exit status.
int RunConsole(const std::vector<std::string>& arguments, const Terminal& terminal, Language language) {
    try {
        return RunCommand(ParseOptions(arguments), terminal, language);
    } catch (const Failure& failure) {
        Notices(terminal, language).Error(failure.Reason(), failure.Hint());
        return failure.Status();
    } catch (const std::exception& error) {
        Notices(terminal, language).Error(Fill(kUnforeseenPhrase, {ReasonOf(error)}));
        return kUnforeseen;
    }
}

// The exit status, when not even the memory to say more can be had.
int EndWithoutMemory(Language language) {
    const std::string_view text = kNoMemory.View(language);
    std::fprintf(stderr, "ventoctl: %.*s.\n", static_cast<int>(text.size()), text.data());
    return kUnforeseen;
}

std::optional<Language> languageOfTheEnd;  // nothing before `main`

// Where an exception can't be caught: in a destructor, and before `main`, where libraries make their
// constants.
[[noreturn]] void EndAtOnce() {
    try {
        if (const auto current = std::current_exception()) std::rethrow_exception(current);
    } catch (const std::bad_alloc&) {
        std::_Exit(EndWithoutMemory(languageOfTheEnd ? *languageOfTheEnd : LanguageFor({})));
    } catch (...) {  // NOLINT(bugprone-empty-catch): a fault that a debugger is to see
    }
    std::abort();
}

const std::terminate_handler kUsualHandler = std::set_terminate(EndAtOnce);

}  // namespace
}  // namespace vento::console

int main(int argc, char* argv[]) {
    using namespace vento;
    const Language language = console::LanguageFor(std::span(argv, static_cast<std::size_t>(argc)));
    console::languageOfTheEnd = language;
    try {
        const auto terminal = platform::MakeNativeTerminal();
        return console::RunConsole(platform::NativeArguments(argc, argv), *terminal, language);
    } catch (const std::bad_alloc&) {
        return console::EndWithoutMemory(language);
    }
}
