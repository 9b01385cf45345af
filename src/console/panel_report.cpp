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

constexpr Phrase kHalfProgrammed{
    "Interrotto durante la programmazione: il telecomando è programmato a metà e va programmato di nuovo.",
    "Ended in the middle of programming: the remote is half-programmed and has to be programmed again."};

ordered_json FirstItemOrNull(const ListView& view) {
    return view.Items().empty() ? ordered_json(nullptr) : ordered_json(view.Items().front());
}

std::string_view LanguageName(Language language) {
    return language == Language::italian ? "ITA" : "ENG";
}

// "0:07"
std::string ClockText(std::chrono::seconds seconds) {
    const std::string rest = std::to_string(seconds.count() % 60);
    return std::to_string(seconds.count() / 60) + ":" + (rest.size() < 2 ? "0" : "") + rest;
}

Progress ProgressOf(FormWeb& form, std::chrono::seconds elapsed) {
    Progress progress;
    progress.caption = form.Label1.Caption();
    if (form.Command6(FormWeb::kCancelHolder).Enabled() && !progress.caption.empty()) {
        progress.hint = Fill({"{0}  Ctrl-C annulla", "{0}  Ctrl-C cancels"}, {ClockText(elapsed)})
                            .In(form.PanelLanguage());
    }
    const ProgressBar& bar = form.ProgressBar1;
    if (bar.Visible() && bar.Maximum() > bar.Minimum()) {
        progress.fraction = (bar.Value() - bar.Minimum()) / (bar.Maximum() - bar.Minimum());
    }
    return progress;
}

void Cancel(FormWeb& form, const Console& console) {
    if (form.Command6(FormWeb::kCancelHolder).Enabled()) {
        form.Cancel();
    } else if (console.options.series) {
        console.notices.Note(
            Phrase{"La serie finisce dopo questo telecomando; un altro Ctrl-C interrompe subito.",
                   "The series ends after this remote; another Ctrl-C ends at once."});
    } else {
        console.notices.Note(Phrase{"Ora non c'è nulla da annullare; un altro Ctrl-C interrompe subito.",
                                    "There is nothing to cancel now; another Ctrl-C ends at once."});
    }
}

// The panel's events lead to standard error for as long as this lives, and so does the time of a wait.
class Shown {
  public:
    Shown(FormWeb& form, ConsoleMachine& machine, const Console& console)
        : form_(form), machine_(machine), console_(console), begin_(machine.Clock().Now()) {
        Observe([this] { Show(); });
        machine_.Desktop().OnInterrupt([this] { Cancel(form_, console_); });
        machine_.Desktop().OnYield([this] {
            if (Elapsed() != shownAt_) Show();
        });
    }
    ~Shown() {
        Observe({});
        machine_.Desktop().OnInterrupt({});
        machine_.Desktop().OnYield({});
        console_.notices.ClearProgress();
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;
    Shown(Shown&&) = delete;
    Shown& operator=(Shown&&) = delete;

  private:
    [[nodiscard]] std::chrono::seconds Elapsed() const {
        return std::chrono::floor<std::chrono::seconds>(machine_.Clock().Now() - begin_);
    }

    void Show() {
        // What comes in last is the outcome, which is told by other means.
        if (form_.LatestOutcome()) return;
        shownAt_ = Elapsed();
        console_.notices.ShowProgress(ProgressOf(form_, shownAt_));
    }

    void Observe(const std::function<void()>& observer) {
        form_.Label1.Observe(observer);
        form_.ProgressBar1.Observe(observer);
        form_.Command6(FormWeb::kCancelHolder).Observe(observer);
    }

    FormWeb& form_;
    ConsoleMachine& machine_;
    const Console& console_;
    platform::Clock::Duration begin_;
    std::chrono::seconds shownAt_{0};
};

// A message of several lines, without what would steer the terminal and without blanks at the ends.
std::string PrintableLines(std::string_view message) {
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

void Conclude(FormWeb& form, ConsoleMachine& machine, const Console& console, Answer& answer) {
    Notices& notices = console.notices;
    const ConsoleDesktop& desktop = machine.Desktop();
    const auto& outcome = form.LatestOutcome();
    if (!outcome) {
        answer.status = static_cast<int>(ResultCode::noTransmitter);
        answer.Diagnose(desktop.LatestDetail().empty() ? "No transmitter was found."
                                                       : desktop.LatestDetail());
        if (machine.Chosen().Misses()) {
            notices.Error(Fill({"Non c'è un'interfaccia di nome {0}; 'ventoctl devices' le elenca.",
                                "There is no interface called {0}; 'ventoctl devices' lists them."},
                               {console.options.transmitter.value_or("")}));
        }
        return;
    }
    answer.status = static_cast<int>(outcome->code);
    answer.fields["result"] = answer.status;
    answer.Diagnose(outcome->diagnostic.In(Language::english));
    if (outcome->code == ResultCode::cancelled && console.options.series)
        return;  // that is how a series ends
    if (outcome->code != ResultCode::success) {
        notices.Error(outcome->message, outcome->diagnostic.In(form.PanelLanguage()));
        return;
    }
    answer.text += PrintableLines(outcome->message);
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
        columns.push_back({{"label", FirstItemOrNull(form.ListView1[c])},
                           {"listA", FirstItemOrNull(form.ListView2[c])},
                           {"listB", FirstItemOrNull(form.ListView3[c])}});
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
    const ordered_json columns = ColumnFields(form);
    for (std::size_t c = 0; c < kColumns; ++c)
        fields["columns"][c].update(columns[c]);  // what has been said of the columns besides stays
    fields["cycles"] = machine.Hid().Cycles();
}

void Operate(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& answer,
             const std::function<void()>& click) {
    const auto begin = machine.Clock().Now();
    form.Label1.SetCaption("");  // what an earlier operation came to is none of this one's progress
    {
        const Shown shown(form, machine, console);
        try {
            click();
        } catch (const EndedAtOnce&) {
            if (form.HalfProgrammed()) console.notices.Error(kHalfProgrammed);
            throw;
        }
    }
    const std::chrono::duration<double> seconds = machine.Clock().Now() - begin;
    answer.fields["seconds"] = answer.fields["seconds"].get<double>() + seconds.count();
    Conclude(form, machine, console, answer);
    console.notices.Detail(
        Fill({"Codice {0}, {1} {1:ciclo|cicli} sul collegamento, {2} ms",
              "Code {0}, {1} {1:cycle|cycles} on the link, {2} ms"},
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
    answer.text += PrintableLines(lines.In(form.PanelLanguage()));
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
        answer.text = PrintableLines(reason.In(form.PanelLanguage()));
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
