#include "console/notices.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "console/text_layout.h"

namespace vento::console {
namespace {

constexpr std::string_view kName = "ventoctl: ";
constexpr std::size_t kNarrowestBeside = 20;  // columns that a text wants beside its prefix

// https://no-color.org: set to anything but nothing, it forbids colour.
bool ColourForbidden() {
    const char* value = std::getenv("NO_COLOR");
    return value != nullptr && *value != '\0';
}

constexpr std::size_t kWidestBar = 50;
constexpr std::size_t kPercentWidth = 6;  // "  42 %"
// Leaves room at the end of a line for what the terminal itself shows there, a ^C or an answer, so that it
// does not break the line.
std::size_t RoomIn(const platform::Terminal& terminal) {
    constexpr std::size_t kMargin = 3;
    const std::size_t columns = terminal.Columns();
    return columns > kMargin ? columns - kMargin : 1;
}

std::string Repeat(std::string_view text, std::size_t count) {
    std::string repeated;
    for (std::size_t i = 0; i < count; ++i)
        repeated += text;
    return repeated;
}

std::string Bar(double fraction, std::size_t width) {
    const std::size_t cells = std::min(width > kPercentWidth ? width - kPercentWidth : 1, kWidestBar);
    const double part = std::clamp(fraction, 0.0, 1.0);
    const auto filled = static_cast<std::size_t>(part * static_cast<double>(cells));
    const std::string percent = std::to_string(static_cast<int>(std::floor(part * 100)));
    return Repeat("█", filled) + Repeat("░", cells - filled) +
           std::string(kPercentWidth - 2 - std::min(percent.size(), kPercentWidth - 2), ' ') + percent + " %";
}

void WriteOut(const std::string& text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
    static_cast<void>(std::fflush(stderr));
}

}  // namespace

std::vector<ProgressLine::Line> ProgressLine::LayOut(const Progress& progress, std::size_t width) {
    std::vector<Line> lines;
    if (!progress.caption.empty()) {
        for (std::string& line : Wrap(progress.caption, width))
            lines.push_back({std::move(line), Style::plain});
    }
    if (!progress.hint.empty()) {
        for (std::string& line : Wrap(progress.hint, width))
            lines.push_back({std::move(line), Style::faint});
    }
    if (progress.fraction) lines.push_back({Bar(*progress.fraction, width), Style::bar});
    return lines;
}

std::string ProgressLine::Coloured(const Line& line) const {
    if (!colour_ || line.style == Style::plain) return line.text;
    return (line.style == Style::faint ? "\033[2m" : "\033[32m") + line.text + "\033[0m";
}

// Back to where the first line begins, and blank from there on. Lines take more rows than one when the
// terminal has become narrower since they were drawn.
std::string ProgressLine::Erasure() const {
    if (shown_.empty()) return {};
    const std::size_t columns = std::max<std::size_t>(terminal_.Columns(), 1);
    std::size_t rows = 0;
    for (const Line& line : shown_)
        rows += std::max<std::size_t>((Width(line.text) + columns - 1) / columns, 1);
    return "\r" + (rows > 1 ? "\033[" + std::to_string(rows - 1) + "A" : std::string{}) + "\033[J";
}

void ProgressLine::Show(const Progress& progress) {
    std::vector<Line> lines = LayOut(progress, RoomIn(terminal_));
    if (lines == shown_) return;
    std::string picture = Erasure();
    for (std::size_t i = 0; i < lines.size(); ++i)
        picture += (i > 0 ? "\n" : "") + Coloured(lines[i]);
    WriteOut(picture);
    shown_ = std::move(lines);
}

void ProgressLine::Clear() {
    if (shown_.empty()) return;
    WriteOut(Erasure());
    shown_.clear();
}

bool WriteResults(const std::string& text) {
    errno = 0;
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

Notices::Notices(const platform::Terminal& terminal, Language language, bool quiet, bool verbose)
    : terminal_(terminal),
      language_(language),
      quiet_(quiet),
      verbose_(verbose),
      redraws_(terminal.CanRedraw()),
      colour_(redraws_ && !ColourForbidden()) {
    if (redraws_ && !quiet_) line_.emplace(terminal_, colour_);
}

// On a terminal the text is broken at words, beside the prefix or, where that leaves too little room, below
// it.
void Notices::Say(std::string_view prefix, std::string_view text) {
    ClearProgress();
    const std::size_t columns = redraws_ ? terminal_.Columns() : std::string::npos;
    const bool beside = columns >= kNarrowestBeside + prefix.size();
    const std::string indent(beside ? prefix.size() : 0, ' ');
    std::string said = indent;
    if (prefix == kName) {
        said = colour_ ? "\033[31m" + std::string(kName) + "\033[0m" : kName;
        if (!beside) said += "\n";
    }
    const std::vector<std::string> lines = Wrap(text, columns - indent.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
        said += (i > 0 ? indent : "") + lines[i] + "\n";
    WriteOut(said);
}

void Notices::Error(const Sentence& text, const Sentence& detail) {
    Say(kName, text.In(language_));
    if (!detail.Empty()) Say(std::string(kName.size(), ' '), detail.In(language_));
}

void Notices::Ask(const Sentence& text) {
    ClearProgress();
    std::string question;
    for (const std::string& line : Wrap(text.In(language_), RoomIn(terminal_)))
        question += (question.empty() ? "" : "\n") + line;
    WriteOut(question + " ");
}

void Notices::Note(const Sentence& text) {
    if (!quiet_) Say({}, text.In(language_));
}

void Notices::Detail(const Sentence& text) {
    if (verbose_) Say({}, text.In(language_));
}

void Notices::ShowProgress(const Progress& progress) {
    if (line_) {
        line_->Show(progress);
    } else if (!progress.caption.empty() && progress.caption != latestCaption_) {
        latestCaption_ = progress.caption;
        Note(progress.caption);
    }
}

void Notices::RingBell() const {
    if (redraws_ && !quiet_) WriteOut("\a");
}

void Notices::ClearProgress() {
    if (line_) line_->Clear();
}

}  // namespace vento::console
