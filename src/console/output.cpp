#include "console/output.h"

#include <array>
#include <filesystem>
#include <utility>

#include "console/failure.h"
#include "console/input.h"
#include "console/notices.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

namespace fs = std::filesystem;

bool Agrees(const Console& console, const std::string& path) {
    console.notices.Ask(
        Fill({"{0} esiste già. Sovrascriverlo? [s/N]", "{0} exists. Overwrite it? [y/N]"}, {path}));
    std::array<char, 256> reply{};
    const std::size_t count = console.terminal.ReadInput(reply);
    EndIfInterrupted(console.terminal);
    constexpr std::string_view kYes = "sSyY";  // sì, yes
    return count > 0 && kYes.find(reply[0]) != std::string_view::npos;
}

void ConfirmOverwriting(const Console& console, const std::string& path, const std::string& source) {
    const fs::path dest = PathFromUtf8(path);
    const fs::path input = PathFromUtf8(source);
    if (console.options.force || !fs::exists(dest) || (fs::exists(input) && fs::equivalent(dest, input)))
        return;
    if (console.terminal.CanAsk() && Agrees(console, path)) return;
    throw Failure(kFailedOutput,
                  Fill({"{0} esiste già e resta com'è.", "{0} exists, and stays as it is."}, {path}),
                  Phrase{"-f lo sovrascrive.", "-f overwrites it."});
}

}  // namespace

Output::Output(const Console& console, std::string path, const std::string& source)
    : console_(console), path_(std::move(path)) {
    if (path_ == kStandardStream) {
        if (!console.options.json) return;
        throw Failure(kWrongUsage, Phrase{"--json e DEST '-' vogliono entrambi lo standard output",
                                          "--json and a DEST of '-' both want standard output"});
    }
    try {
        const auto folder = fs::status(PathFromUtf8(path_));
        if (!fs::is_directory(folder)) ConfirmOverwriting(console, path_, source);
        replacement_ = platform::ReplaceNatively(PathFromUtf8(path_));
    } catch (const fs::filesystem_error& error) {
        throw Failure(kFailedOutput, About(path_, platform::FileError(error.code())));
    } catch (const platform::FileError& error) {
        throw Failure(kFailedOutput, About(path_, error));
    }
}

void Output::Save(std::span<const std::uint8_t> bytes, Answer& answer) {
    if (IsStandard()) {
        answer.text.assign(bytes.begin(), bytes.end());
        return;
    }
    try {
        replacement_->Write(bytes);
        EndIfInterrupted(console_.terminal);
        replacement_->TakePlace();
    } catch (const platform::FileError& error) {
        throw Failure(kFailedOutput, About(path_, error));
    }
}

void Output::Tell(const Sentence& summary, Answer& answer) const {
    if (IsStandard()) {
        console_.notices.Note(summary);
    } else {
        answer.text = summary.In(console_.language) + "\n";
    }
}

}  // namespace vento::console
