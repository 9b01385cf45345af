#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/failure.h"
#include "console/panel_report.h"
#include "console/programme_file.h"
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

constexpr std::array kCheckArguments{
    ArgumentEntry{{"FILE", "FILE"},
                  {"Il file di programmazione, o più d'uno; - per lo standard input",
                   "The programme file, or several; - for standard input"},
                  true,
                  true}};

constexpr std::array kCheckOptions{
    OptionEntry{"strict",
                '\0',
                OptionEntry::Value::none,
                {"", ""},
                {"Con un avvertimento termina con lo stato 1", "End with status 1 if there is a warning"},
                [](Options& options, std::string_view) { return options.strict = true; }}};

void TakeList(const ListView& view, CheckedList place, std::vector<CheckedList>& lists) {
    const std::string_view text = TrimBlanks(view.FirstItem());
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

std::optional<Problem> ProblemOf(const LoadResult& load, const std::vector<CheckedList>& lists,
                                 Language language) {
    if (const auto& problem = load.problem) {
        return Problem{problem->line, problem->field, DescribeLoadReason(*problem).In(language)};
    }
    for (const CheckedList& each : lists) {
        if (each.list.bad) {
            return Problem{
                each.line, kListField,
                DescribeBadPiece(*each.list.bad, kSections[each.column].name, each.letter).In(language)};
        }
    }
    return std::nullopt;
}

ordered_json ListFields(const std::vector<CheckedList>& lists) {
    ordered_json fields = ordered_json::array();
    for (const CheckedList& each : lists) {
        fields.push_back({{"column", kSections[each.column].name},
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
    if (each.list.bad) return text + Phrase{"non utilizzabile", "not usable"}.In(language) + "\n";
    const std::string bytes = std::to_string(each.list.bytes.size());
    text += std::string(bytes.size() < 5 ? 5 - bytes.size() : 0, ' ') + bytes;
    text += Fill({" byte  ", " {0:byte |bytes}  "}, {bytes}).In(language) +
            Pad(DecodeName(each.list.bytes), kNameLength);
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
            TrimBlanks(Pad(kSections[c].name, 5) + (labels.empty() ? "" : Printable(labels.front()))));
        text += "\n" + own;
    }
    return text;
}

std::string DescribeProblem(const Problem& problem, Language language) {
    if (problem.line == 0) return problem.reason;
    return Phrase{"Riga ", "Line "}.In(language) + std::to_string(problem.line) +
           Phrase{", campo ", ", field "}.In(language) + std::to_string(problem.field + 1) + ": " +
           problem.reason;
}

// What is found wrong, behind the name of the file.
std::string Finding(const std::string& path, const std::string& text) {
    return Printable(path + ": " + text) + "\n";
}

void TellWarnings(const Console& console, const std::string& path, const std::vector<Warning>& warnings,
                  Answer& answer) {
    for (const Warning& warning : warnings) {
        Sentence text = warning.reason;
        if (warning.line > 0) {
            text = Fill({"riga {0}: {1}", "line {0}: {1}"}, {std::to_string(warning.line), warning.reason});
        }
        text = Fill({"Attenzione: {0}", "Warning: {0}"}, {text});
        answer.text += Finding(path, text.In(console.language));
        answer.fields["warnings"].push_back(
            {{"line", warning.line > 0 ? ordered_json(warning.line) : ordered_json(nullptr)},
             {"reason", warning.reason.In(console.language)}});
    }
    if (!warnings.empty() && console.options.strict && answer.status == 0) answer.status = kNotWhole;
}

ordered_json BlankFields() {
    ordered_json fields = {
        {"loads", false}, {"columns", ordered_json::array()}, {"lists", ordered_json::array()}};
    fields["problem"] = nullptr;
    fields["warnings"] = ordered_json::array();
    return fields;
}

// What one file holds and what is wrong with it.
void CheckFile(const Console& console, const Machine& machine, const std::string& path, Answer& answer) {
    answer.fields = BlankFields();
    FormWeb form(machine);
    form.Form_Load("");
    const LoadResult load = form.Aprifilevento(path);
    const std::vector<CheckedList> lists = ListsOf(form, load);
    const auto problem = ProblemOf(load, lists, form.PanelLanguage());
    answer.fields["loads"] = !load.problem;
    answer.fields["columns"] = ColumnFields(form);
    answer.fields["lists"] = ListFields(lists);
    answer.fields["problem"] = ProblemFields(problem);
    answer.text = DescribeProgramme(form, lists, form.PanelLanguage());
    if (load.problem && load.problem->reason == LoadProblem::Reason::cannotOpen) {
        answer.status = kMissingInput;
        answer.Diagnose(DescribeLoadProblem(*load.problem).In(Language::english));
        console.notices.Error(path, DescribeLoadProblem(*load.problem).In(console.language));
        return;
    }
    if (problem) {
        answer.status = kUnusableInput;
        answer.Diagnose(DescribeProblem(*ProblemOf(load, lists, Language::english), Language::english));
        answer.text += Finding(path, DescribeProblem(*problem, form.PanelLanguage()));
    }
    const std::string text = load.problem && load.problem->reason == LoadProblem::Reason::tooLarge
                                 ? std::string{}
                                 : machine.files.ReadAll(path, kLargestProgramme);
    TellWarnings(console, path, FindWarnings(text, form, load), answer);
}

void RunCheck(const Console& console, Answer& answer) {
    answer.fields = BlankFields();
    ConsoleMachine machine(console);
    FilesAndInput files(console.terminal);
    const Machine own = machine.ForPanel();
    const Machine withInput{own.hid, own.desktop, files, own.clock, own.backEnd};
    const auto& paths = console.options.arguments;
    if (paths.size() == 1) {
        CheckFile(console, withInput, paths.front(), answer);
        machine.Finish();
        return;
    }
    answer.fields = {{"files", ordered_json::array()}};
    for (const std::string& path : paths) {
        Answer one;
        CheckFile(console, withInput, path, one);
        if (!one.text.empty()) answer.text += Printable(path) + "\n" + one.text;
        if (!one.diagnostic.empty()) answer.Diagnose(path + ": " + one.diagnostic);
        answer.status = std::max(answer.status, one.status);
        ordered_json fields = {{"file", path}, {"status", one.status}};
        fields.update(one.fields);
        answer.fields["files"].push_back(std::move(fields));
    }
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kCheckCommand{
    "check",
    {"Dice che cosa contengono dei file di programmazione, o che cosa non va",
     "Say what programme files hold, or what is wrong with them"},
    kCheckArguments,
    kCheckOptions,
    {},
    RunCheck};

}  // namespace vento::console
