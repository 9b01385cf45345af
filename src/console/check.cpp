#include <array>
#include <optional>
#include <string>
#include <vector>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/failure.h"
#include "console/panel_report.h"
#include "console/text_layout.h"
#include "console/warnings.h"
#include "panel/form_web.h"
#include "programme/fields.h"
#include "protocol/code_lists.h"
#include "protocol/commands.h"
#include "protocol/read_back.h"
#include "text/language.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kListField = 2;  // where a line has its code list
constexpr std::size_t kWidestPiece = 24;

// A code list of the programme.
struct CheckedList {
    std::size_t column = 0;
    char letter = 'A';
    std::size_t line = 0;
    ParsedCodeList list;
};

// Why the programme can't be used.
struct Problem {
    std::size_t line = 0;  // 0 where the whole file is meant
    std::size_t field = 0;
    std::string reason;
};

constexpr std::array kArguments{
    ArgumentEntry{{"FILE", "FILE"}, {"Il file di programmazione", "The programme file"}}};

constexpr std::array kOptions{
    OptionEntry{"strict",
                '\0',
                OptionEntry::Value::none,
                {"", ""},
                {"Con un avvertimento termina con lo stato 1", "End with status 1 if there is a warning"},
                [](Options& options, std::string_view) { return options.strict = true; }}};

std::string ColumnName(std::size_t column) {
    return std::string(kSections[column].name);
}

void TakeList(const ListView& view, CheckedList place, std::vector<CheckedList>& lists) {
    if (view.Items().empty()) return;
    const std::string_view text = TrimBlanks(view.Items().front());
    if (text.empty()) return;  // no list: a remote that would want it is refused, others are not
    place.list = ParseCodeList(text);
    lists.push_back(std::move(place));
}

std::vector<CheckedList> ListsOf(const FormWeb& form, const LoadResult& load) {
    std::vector<CheckedList> lists;
    for (std::size_t c = 0; c < kColumns; ++c) {
        TakeList(form.ListView2[c], {c, 'A', load.lines[c].listA, {}}, lists);
        TakeList(form.ListView3[c], {c, 'B', load.lines[c].listB, {}}, lists);
    }
    return lists;
}

std::string DescribeBadPiece(const BadPiece& piece, Language language) {
    return Phrase{"elemento ", "piece "}.In(language) + std::to_string(piece.place) + ": \"" +
           Shorten(Printable(piece.text), kWidestPiece) + "\" " +
           Phrase{"non è un numero da 0 a 255.", "is not a number from 0 to 255."}.In(language);
}

std::optional<Problem> ProblemOf(const LoadResult& load, const std::vector<CheckedList>& lists,
                                 Language language) {
    if (const auto& problem = load.problem) {
        return Problem{problem->line, problem->field, DescribeLoadReason(*problem).In(language)};
    }
    for (const CheckedList& each : lists) {
        if (each.list.bad) return Problem{each.line, kListField, DescribeBadPiece(*each.list.bad, language)};
    }
    return std::nullopt;
}

ordered_json ListFields(const std::vector<CheckedList>& lists) {
    ordered_json fields = ordered_json::array();
    for (const CheckedList& each : lists) {
        fields.push_back({{"column", ColumnName(each.column)},
                          {"list", std::string(1, each.letter)},
                          {"bytes", each.list.bytes.size()},
                          {"name", DecodeName(each.list.bytes)},
                          {"valid", !each.list.bad}});
    }
    return fields;
}

ordered_json ProblemFields(const std::optional<Problem>& problem) {
    if (!problem) return nullptr;
    ordered_json fields = {{"line", nullptr}, {"field", nullptr}, {"reason", problem->reason}};
    if (problem->line > 0) {
        fields["line"] = problem->line;
        fields["field"] = problem->field;
    }
    return fields;
}

// TV   Label
//      A    312 bytes  NAME      line 1
std::string DescribeList(const CheckedList& each, Language language) {
    std::string text = "     " + std::string(1, each.letter) + "  ";
    if (each.list.bad) return text + DescribeBadPiece(*each.list.bad, language) + "\n";
    const std::string bytes = std::to_string(each.list.bytes.size());
    text += std::string(bytes.size() < 5 ? 5 - bytes.size() : 0, ' ') + bytes;
    text += Phrase{" byte  ", " bytes  "}.In(language) + Pad(DecodeName(each.list.bytes), kNameLength);
    return text + Phrase{"  riga ", "  line "}.In(language) + std::to_string(each.line) + "\n";
}

std::string DescribeProgramme(const FormWeb& form, const std::vector<CheckedList>& lists, Language language) {
    std::string text;
    for (std::size_t c = 0; c < kColumns; ++c) {
        const auto& labels = form.ListView1[c].Items();
        std::string own;
        for (const CheckedList& each : lists) {
            if (each.column == c) own += DescribeList(each, language);
        }
        if (labels.empty() && own.empty()) continue;
        text += std::string(
            TrimBlanks(Pad(ColumnName(c), 5) + (labels.empty() ? "" : Printable(labels.front()))));
        text += "\n" + own;
    }
    return text;
}

std::string DescribeProblem(const Problem& problem, Language language) {
    if (problem.line == 0) return problem.reason;
    return Phrase{"Riga ", "Line "}.In(language) + std::to_string(problem.line) +
           Phrase{", campo ", ", field "}.In(language) + std::to_string(problem.field) + ": " +
           problem.reason;
}

void TellWarnings(const Console& console, const std::vector<Warning>& warnings, Answer& answer) {
    for (const Warning& warning : warnings) {
        Sentence text = warning.reason;
        if (warning.line > 0) {
            text = Fill({"riga {0}: {1}", "line {0}: {1}"}, {std::to_string(warning.line), warning.reason});
        }
        text = Fill({"Attenzione: {0}", "Warning: {0}"}, {text});
        answer.text += Printable(text.In(console.language)) + "\n";
        answer.fields["warnings"].push_back(
            {{"line", warning.line > 0 ? ordered_json(warning.line) : ordered_json(nullptr)},
             {"reason", warning.reason.In(console.language)}});
    }
    if (!warnings.empty() && console.options.strict && answer.status == 0) answer.status = kNotWhole;
}

std::string TextOfFile(ConsoleMachine& machine, const std::string& path) {
    try {
        return machine.ForPanel().files.ReadAll(path, kLargestProgramme);
    } catch (const platform::FileError&) {
        return {};  // the load tells why
    }
}

void Run(const Console& console, Answer& answer) {
    answer.fields = {{"loads", false}, {"columns", ordered_json::array()}, {"lists", ordered_json::array()}};
    answer.fields["problem"] = nullptr;
    answer.fields["warnings"] = ordered_json::array();
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    form.Form_Load("");
    answer.fields["columns"] = ColumnFields(form);
    const LoadResult load = form.Aprifilevento(console.options.Argument(0));
    const std::vector<CheckedList> lists = ListsOf(form, load);
    const auto problem = ProblemOf(load, lists, form.PanelLanguage());
    answer.fields["loads"] = !load.problem;
    answer.fields["columns"] = ColumnFields(form);
    answer.fields["lists"] = ListFields(lists);
    answer.fields["problem"] = ProblemFields(problem);
    answer.text = DescribeProgramme(form, lists, form.PanelLanguage());
    if (load.problem && load.problem->reason == LoadProblem::Reason::cannotOpen) {
        RefuseProgramme(console, *load.problem, form.PanelLanguage(), answer);
    } else if (problem) {
        answer.status = kUnusableInput;
        answer.Diagnose(DescribeProblem(*ProblemOf(load, lists, Language::english), Language::english));
        answer.text += DescribeProblem(*problem, form.PanelLanguage()) + "\n";
    }
    TellWarnings(console, FindWarnings(TextOfFile(machine, console.options.Argument(0)), form, load), answer);
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kCheckCommand{
    "check",
    {"Dice che cosa contiene un file di programmazione, o che cosa non va",
     "Say what a programme file holds, or what is wrong with it"},
    kArguments,
    kOptions,
    {},
    Run};

}  // namespace vento::console
