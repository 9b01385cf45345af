#include "console/console.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>
#include <variant>

#include "console/commands.h"
#include "console/failure.h"
#include "console/notices.h"
#include "console/options.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

// True if all of it has left the program.
bool WriteResults(const std::string& text) {
    errno = 0;
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

// The status of a program whose results are `text`.
int Deliver(const std::string& text, int status, Notices& notices) {
    if (WriteResults(text)) return status;
    notices.Error("The results can't be written: " + std::generic_category().message(errno) + ".");
    return kFailedOutput;
}

std::string JsonOf(const CommandEntry& command, const Answer& answer) {
    ordered_json object = {{"operation", command.name}, {"diagnostic", nullptr}};
    if (!answer.diagnostic.empty()) object["diagnostic"] = answer.diagnostic;
    object.update(answer.fields);
    // Paths are what the file system says they are, not always UTF-8.
    return object.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

void Fail(const std::string& what, int status, Notices& notices, Answer& answer) {
    answer.status = status;
    answer.Diagnose(what);
    notices.Error(what);
}

int RunCommand(const Options& options, const platform::Terminal& terminal) {
    Notices notices(terminal, options.quiet);
    Answer answer;
    try {
        options.command->run({options, terminal, notices}, answer);
    } catch (const EndedAtOnce& end) {
        return end.status;
    } catch (const Failure& failure) {
        Fail(failure.what(), failure.Status(), notices, answer);
    } catch (const std::exception& error) {
        Fail(std::string("Something unforeseen has happened: ") + error.what(), kUnforeseen, notices, answer);
    }
    return Deliver(options.json ? JsonOf(*options.command, answer) : answer.text, answer.status, notices);
}

}  // namespace

int RunConsole(const std::vector<std::string>& arguments, const platform::Terminal& terminal) {
    try {
        const auto parsed = ParseOptions(arguments);
        if (const auto* options = std::get_if<Options>(&parsed)) return RunCommand(*options, terminal);
        const auto& word = std::get<LastWord>(parsed);
        Notices notices(terminal, false);
        if (word.status == 0) return Deliver(word.text, 0, notices);
        static_cast<void>(std::fputs(word.text.c_str(), stderr));
        return word.status;
    } catch (const std::exception& error) {
        static_cast<void>(std::fprintf(stderr, "ventoctl: %s\n", error.what()));
        return kUnforeseen;
    }
}

}  // namespace vento::console
