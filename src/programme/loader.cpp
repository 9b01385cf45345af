#include "programme/loader.h"

#include <string_view>
#include <vector>

#include "programme/fields.h"
#include "text/encoding.h"

namespace vento {
namespace {

constexpr std::size_t kMaximumLineFeeds = 32767;
constexpr std::size_t kFields = 5;  // fields behind these have no meaning

struct Line {
    std::array<std::string_view, kFields> fields;
    std::size_t fieldCount = 0;  // kFields at the most
};

Line SplitFields(std::string_view text) {
    Line line;
    for (;;) {
        const auto end = text.find(';');
        line.fields[line.fieldCount++] = text.substr(0, end);
        if (end == std::string_view::npos || line.fieldCount == kFields) return line;
        text.remove_prefix(end + 1);
    }
}

// The text behind the last line feed is no line.
std::vector<Line> SplitLines(std::string_view text, std::size_t lineFeeds) {
    std::vector<Line> lines;
    lines.reserve(lineFeeds);
    for (std::size_t i = 0; i < lineFeeds; ++i) {
        const auto end = text.find('\n');
        lines.push_back(SplitFields(text.substr(0, end)));
        text.remove_prefix(end + 1);
    }
    return lines;
}

std::optional<LoadProblem> RequireFields(const std::vector<Line>& lines, std::size_t count) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].fieldCount < count) {
            return LoadProblem{LoadProblem::Reason::missingField, i + 1, lines[i].fieldCount, {}};
        }
    }
    return std::nullopt;
}

// The first line of a column: the one whose number finds the column's view empty.
struct FirstLine {
    std::size_t row = 0;
    std::size_t column = 0;
};

// Adds an item to each column's view in `views` for the first line of the column. `itemText` gives the text
// for it.
template <class ItemText>
void FillFrom(const std::vector<FirstLine>& firstLines, std::array<ListView, kColumns>& views,
              ItemText itemText) {
    for (const auto& [row, column] : firstLines)
        views[column].Add(Utf8FromWindows1252(itemText(row)));
}

void ClearAll(const ProgrammeControls& controls) {
    for (auto* views : {&controls.labels, &controls.listsA, &controls.listsB}) {
        for (ListView& view : *views)
            view.Clear();
    }
}

// The order of the steps shows when a file is at fault: lists A fill up to the line with the bad column
// number, and a line that lacks only its last field stops the load after lists A and before the labels.
std::optional<LoadProblem> FillViews(const std::string& text, const ProgrammeControls& controls,
                                     std::array<ColumnLines, kColumns>& origins) {
    if (text.empty()) return LoadProblem{LoadProblem::Reason::empty, 0, 0, {}};
    std::size_t lineFeeds = 0;
    for (const char character : text)
        lineFeeds += character == '\n' ? 1 : 0;
    if (lineFeeds > kMaximumLineFeeds) return LoadProblem{LoadProblem::Reason::tooManyLines, 0, 0, {}};

    const std::vector<Line> lines = SplitLines(text, lineFeeds);
    if (auto problem = RequireFields(lines, kFields - 1)) return problem;

    std::vector<FirstLine> firstLines;
    for (std::size_t row = 0; row < lines.size(); ++row) {
        const auto number = ParseDecimal(lines[row].fields[0], kColumns);
        if (!number || *number == 0) return LoadProblem{LoadProblem::Reason::badColumn, row + 1, 0, {}};
        const std::size_t column = *number - 1U;
        if (!controls.listsA[column].Items().empty()) continue;
        controls.listsA[column].Add(Utf8FromWindows1252(lines[row].fields[2]));
        origins[column].listA = row + 1;
        firstLines.push_back({row, column});
    }
    if (auto problem = RequireFields(lines, kFields)) return problem;

    FillFrom(firstLines, controls.labels, [&](std::size_t row) { return lines[row].fields[1]; });
    FillFrom(firstLines, controls.listsB, [&](std::size_t row) {
        return row + 1 < lines.size() ? lines[row + 1].fields[2] : std::string_view{};
    });
    for (const auto& [row, column] : firstLines) {
        if (row + 1 < lines.size()) origins[column].listB = row + 2;
    }
    return std::nullopt;
}

}  // namespace

Sentence DescribeLoadProblem(const LoadProblem& problem) {
    Sentence reason = DescribeLoadReason(problem);
    if (problem.line == 0) return reason;
    return Fill({"Riga {0}, campo {1}: {2}", "Line {0}, field {1}: {2}"},
                {std::to_string(problem.line), std::to_string(problem.field + 1), reason});
}

Sentence DescribeLoadReason(const LoadProblem& problem) {
    switch (problem.reason) {
        case LoadProblem::Reason::cannotOpen:
            return Fill({"Impossibile aprire il file: {0}", "The file could not be opened: {0}"},
                        {problem.systemReason});
        case LoadProblem::Reason::tooLarge:
            return Phrase{"Il file è troppo grande per essere un file di programmazione.",
                          "The file is too large to be a programme file."};
        case LoadProblem::Reason::empty:
            return Phrase{"Il file è vuoto.", "The file is empty."};
        case LoadProblem::Reason::tooManyLines:
            return Phrase{"Il file ha più di 32767 righe.", "The file has more than 32767 lines."};
        case LoadProblem::Reason::missingField:
            return Phrase{"manca. Ogni riga deve avere almeno 5 campi separati da punto e virgola.",
                          "missing. Each line needs at least 5 fields separated by semicolons."};
        case LoadProblem::Reason::badColumn:
            return Phrase{"il numero della colonna deve essere 1, 2 o 3.",
                          "the column number has to be 1, 2 or 3."};
    }
    return {};
}

LoadResult Aprifilevento(const std::string& nnfilevento, platform::Files& files,
                         const ProgrammeControls& controls) {
    controls.path.SetCaption(nnfilevento);
    LoadResult result;
    std::string text;
    try {
        text = files.ReadAll(nnfilevento, kLargestProgramme);
    } catch (const platform::FileTooLarge&) {
        result.problem = LoadProblem{LoadProblem::Reason::tooLarge, 0, 0, {}};
        return result;
    } catch (const platform::FileError& error) {
        result.problem = LoadProblem{LoadProblem::Reason::cannotOpen, 0, 0, error.Reason()};
        return result;
    }
    ClearAll(controls);
    result.problem = FillViews(text, controls, result.lines);
    if (!result.problem) controls.programButton.SetVisible(true);
    return result;
}

}  // namespace vento
