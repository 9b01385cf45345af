#include "console/notices.h"

#include <cstdio>
#include <cstdlib>

#include "console/text_layout.h"

namespace vento::console {
namespace {

constexpr std::string_view kName = "ventoctl: ";
constexpr std::size_t kNarrowest = 20;  // columns below which nothing is wrapped any more

// https://no-color.org: set to anything but nothing, it forbids colour.
bool ColourForbidden() {
    const char* value = std::getenv("NO_COLOR");
    return value != nullptr && *value != '\0';
}

}  // namespace

Notices::Notices(const platform::Terminal& terminal, bool quiet)
    : terminal_(terminal),
      quiet_(quiet),
      redraws_(terminal.CanRedraw()),
      colour_(redraws_ && !ColourForbidden()) {
    if (redraws_ && !quiet_) line_.emplace(terminal_, colour_);
}

// On a terminal the text is broken at words, indented below the prefix.
void Notices::Say(std::string_view prefix, std::string_view text) {
    ClearProgress();
    const std::size_t columns = terminal_.Columns();
    const bool wraps = redraws_ && columns >= kNarrowest + prefix.size();
    std::string said;
    for (const std::string& line : Wrap(text, wraps ? columns - prefix.size() : std::string::npos)) {
        if (!said.empty()) {
            said.append(prefix.size(), ' ');
        } else if (colour_ && prefix == kName) {
            said += "\033[31m" + std::string(prefix) + "\033[0m";
        } else {
            said += prefix;
        }
        said += line + "\n";
    }
    static_cast<void>(std::fwrite(said.data(), 1, said.size(), stderr));
    static_cast<void>(std::fflush(stderr));
}

void Notices::Error(std::string_view text, std::string_view detail) {
    Say(kName, text);
    if (!detail.empty()) Say(std::string(kName.size(), ' '), detail);
}

void Notices::Note(std::string_view text) {
    if (!quiet_) Say({}, text);
}

void Notices::ShowProgress(const Progress& progress) {
    if (line_) {
        line_->Show(progress);
    } else if (!progress.caption.empty() && progress.caption != latestCaption_) {
        latestCaption_ = progress.caption;
        Note(progress.caption);
    }
}

void Notices::ClearProgress() {
    if (line_) line_->Clear();
}

}  // namespace vento::console
