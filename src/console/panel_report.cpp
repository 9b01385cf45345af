#include "console/panel_report.h"

#include <chrono>
#include <string>

#include "console/failure.h"
#include "console/notices.h"
#include "console/outcome_report.h"
#include "console/text_layout.h"
#include "programme/fields.h"
#include "text/language.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

constexpr int kCancelHolder = 3;  // index in Command6

constexpr Phrase kHalfProgrammed{
    "Interrotto durante la programmazione: il telecomando è programmato a metà e va programmato di nuovo.",
    "Ended in the middle of programming: the remote is half-programmed and has to be programmed again."};

ordered_json ItemOf(const ListView& view) {
    return view.Items().empty() ? ordered_json(nullptr) : ordered_json(view.Items().front());
}

std::string_view LanguageName(Language language) {
    return language == Language::italian ? "ITA" : "ENG";
}

Progress ProgressOf(FormWeb& form) {
    Progress progress;
    progress.caption = form.Label1.Caption();
    if (form.Command6(kCancelHolder).Enabled() && !progress.caption.empty()) {
        progress.hint = Phrase{"Ctrl-C annulla", "Ctrl-C cancels"}.In(form.PanelLanguage());
    }
    const ProgressBar& bar = form.ProgressBar1;
    if (bar.Visible() && bar.Maximum() > bar.Minimum()) {
        progress.fraction = (bar.Value() - bar.Minimum()) / (bar.Maximum() - bar.Minimum());
    }
    return progress;
}

void Cancel(FormWeb& form, Notices& notices) {
    if (form.Command6(kCancelHolder).Enabled()) {
        form.Cancel();
    } else {
        notices.Note(Phrase{"Ora non c'è nulla da annullare; un altro Ctrl-C interrompe subito.",
                            "There is nothing to cancel now; another Ctrl-C ends at once."});
    }
}

// The panel's events lead to standard error for as long as this lives.
class Shown {
  public:
    Shown(FormWeb& form, ConsoleDesktop& desktop, Notices& notices)
        : form_(form), desktop_(desktop), notices_(notices) {
        Observe([this] {
            // What comes in last is the outcome, which is told by other means.
            if (!form_.LatestOutcome()) notices_.ShowProgress(ProgressOf(form_));
        });
        desktop_.OnInterrupt([this] { Cancel(form_, notices_); });
    }
    ~Shown() {
        Observe({});
        desktop_.OnInterrupt({});
        notices_.ClearProgress();
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;
    Shown(Shown&&) = delete;
    Shown& operator=(Shown&&) = delete;

  private:
    void Observe(const std::function<void()>& observer) {
        form_.Label1.Observe(observer);
        form_.ProgressBar1.Observe(observer);
        form_.Command6(kCancelHolder).Observe(observer);
    }

    FormWeb& form_;
    ConsoleDesktop& desktop_;
    Notices& notices_;
};

// A message of several lines, without what would steer the terminal and without blanks at the ends.
std::string LinesOf(std::string_view message) {
    std::string text;
    while (!message.empty()) {
        const auto end = message.find('\n');
        const std::string line = Printable(message.substr(0, end));
        const std::string_view trimmed = TrimBlanks(line);
        if (!trimmed.empty()) text += std::string(trimmed) + "\n";
        if (end == std::string_view::npos) break;
        message.remove_prefix(end + 1);
    }
    return text;
}

void Conclude(FormWeb& form, const ConsoleDesktop& desktop, Notices& notices, Answer& answer) {
    const auto& outcome = form.LatestOutcome();
    if (!outcome) {
        answer.status = static_cast<int>(ResultCode::noTransmitter);
        answer.Diagnose(desktop.LatestDetail().empty() ? "No transmitter was found."
                                                       : desktop.LatestDetail());
        return;
    }
    answer.status = static_cast<int>(outcome->code);
    answer.fields["result"] = answer.status;
    answer.Diagnose(outcome->diagnostic.In(Language::english));
    if (outcome->code != ResultCode::success) {
        notices.Error(outcome->message, outcome->diagnostic.In(form.PanelLanguage()));
        return;
    }
    answer.text += LinesOf(outcome->message);
}

}  // namespace

ordered_json BlankPanelFields(Language language) {
    const ordered_json column = {{"label", nullptr}, {"listA", nullptr}, {"listB", nullptr}};
    return {{"result", nullptr},
            {"message", ""},
            {"text1", ""},
            {"messageBox", nullptr},
            {"language", LanguageName(language)},
            {"label2", ""},
            {"programButton", {{"visible", false}, {"enabled", false}}},
            {"progressBar", {{"minimum", 0}, {"maximum", 0}, {"value", 0}, {"visible", false}}},
            {"columns", {column, column, column}},
            {"cycles", 0},
            {"seconds", 0}};
}

ordered_json BlankProgrammingFields(Language language) {
    ordered_json fields = BlankPanelFields(language);
    fields.update({{"version", nullptr}, {"complete", false}});
    for (ordered_json& column : fields["columns"])
        column["outcome"] = nullptr;
    return fields;
}

ordered_json ColumnFields(const FormWeb& form) {
    ordered_json columns = ordered_json::array();
    for (std::size_t c = 0; c < kColumns; ++c) {
        columns.push_back({{"label", ItemOf(form.ListView1[c])},
                           {"listA", ItemOf(form.ListView2[c])},
                           {"listB", ItemOf(form.ListView3[c])}});
    }
    return columns;
}

void ReportPanel(FormWeb& form, ConsoleMachine& machine, Answer& answer) {
    ordered_json& fields = answer.fields;
    const Button& program = form.Command6(0);
    const ProgressBar& bar = form.ProgressBar1;
    fields["message"] = form.Label1.Caption();
    fields["text1"] = form.Text1.Text();
    if (const auto& box = machine.Desktop().LatestMessage()) fields["messageBox"] = *box;
    fields["language"] = LanguageName(form.PanelLanguage());
    fields["label2"] = form.Label2.Caption();
    fields["programButton"] = {{"visible", program.Visible()}, {"enabled", program.Enabled()}};
    fields["progressBar"] = {{"minimum", bar.Minimum()},
                             {"maximum", bar.Maximum()},
                             {"value", bar.Value()},
                             {"visible", bar.Visible()}};
    fields["columns"] = ColumnFields(form);
    fields["cycles"] = machine.Hid().Cycles();
}

void Operate(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& answer,
             const std::function<void()>& click) {
    const auto begin = machine.Clock().Now();
    form.Label1.SetCaption("");  // what an earlier operation came to is none of this one's progress
    {
        const Shown shown(form, machine.Desktop(), console.notices);
        try {
            click();
        } catch (const EndedAtOnce&) {
            if (form.HalfProgrammed()) console.notices.Error(kHalfProgrammed);
            throw;
        }
    }
    const std::chrono::duration<double> seconds = machine.Clock().Now() - begin;
    answer.fields["seconds"] = answer.fields["seconds"].get<double>() + seconds.count();
    Conclude(form, machine.Desktop(), console.notices, answer);
    console.notices.Detail(
        Fill({"Codice {0}, {1} cicli sul collegamento, {2} ms", "Code {0}, {1} cycles on the link, {2} ms"},
             {std::to_string(answer.status), std::to_string(machine.Hid().Cycles()),
              std::to_string(std::chrono::round<std::chrono::milliseconds>(seconds).count())}));
}

void ReportColumns(const FormWeb& form, const ProgrammingOutcome& outcome, std::string_view key,
                   Answer& answer) {
    answer.fields["version"] = VersionFields(outcome.version);
    for (std::size_t c = 0; c < kColumns; ++c)
        answer.fields["columns"][c][key] = OutcomeFields(outcome, c, form.PanelLanguage());
}

void TellColumns(const FormWeb& form, const ProgrammingOutcome& outcome,
                 Sentence (*describe)(const ColumnOutcome&), Answer& answer) {
    const Sentence lines = DescribeColumns(outcome, form.Label2.Caption(), describe);
    answer.text += LinesOf(lines.In(form.PanelLanguage()));
}

bool LoadProgramme(const Console& console, FormWeb& form, Answer& answer) {
    const LoadResult load = form.Aprifilevento(console.options.Argument(0));
    if (load.problem) RefuseProgramme(console, *load.problem, form.PanelLanguage(), answer);
    return !load.problem;
}

void ReportReading(const FormWeb& form, Answer& answer) {
    const auto& outcome = form.LatestOutcome();
    if (!outcome) return;
    const RemoteReading& reading = outcome->reading;
    answer.fields["version"] = VersionFields(reading.version);
    if (reading.flags) answer.fields["free"] = *reading.flags;
    answer.fields["sections"] = SectionFields(reading);
    if (outcome->code != ResultCode::success) return;
    if (const Sentence reason = ExplainEmptyReading(reading); !reason.Empty()) {
        answer.text = LinesOf(reason.In(form.PanelLanguage()));
        answer.Diagnose(reason.In(Language::english));
    }
}

void RefuseProgramme(const Console& console, const LoadProblem& problem, Language language, Answer& answer) {
    const bool unread = problem.reason == LoadProblem::Reason::cannotOpen;
    answer.status = unread ? kMissingInput : kUnusableInput;
    answer.Diagnose(DescribeLoadProblem(problem).In(Language::english));
    console.notices.Error(console.options.Argument(0), DescribeLoadProblem(problem).In(language));
}

}  // namespace vento::console
