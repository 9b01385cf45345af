#include "console/program_run.h"

#include "console/failure.h"
#include "console/notices.h"
#include "console/panel_report.h"
#include "panel/advice.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

void ReportRun(const Console& console, const FormWeb& form, const OperationOutcome& programming,
               const std::optional<OperationOutcome>& verification, Answer& answer) {
    const bool lost = programming.programming.Incomplete();
    const bool succeeded = programming.code == ResultCode::success;
    ReportColumns(form, programming.programming, "outcome", answer);
    if (verification) ReportColumns(form, verification->programming, "verification", answer);
    answer.fields["complete"] = succeeded && !lost && answer.status == 0;
    if (succeeded && lost && console.options.strict && answer.status == 0) answer.status = kNotWhole;
}

void ReportUnfinished(const FormWeb& form, Answer& answer) {
    ProgrammingOutcome outcome = form.Unfinished();
    if (!outcome.writing) return;
    if (const auto column = outcome.ColumnInWork())
        outcome.columns.at(*column).problem = Phrase{"interrotta a metà.", "cut off in its midst."};
    ReportColumns(form, outcome, "outcome", answer);
}

std::optional<OperationOutcome> VerifyRun(const Console& console, ConsoleMachine& machine, FormWeb& form,
                                          Answer& answer) {
    Operate(console, machine, form, answer, [&] { form.Verify(); });
    const auto& outcome = form.LatestOutcome();
    if (outcome) TellColumns(form, outcome->programming, DescribeVerification, answer);
    return outcome;
}

// Whether a remote was there to be programmed, so that the run counts for it.
bool MetRemote(const OperationOutcome& outcome) {
    return outcome.programming.version.has_value() || outcome.code == ResultCode::versionFailed;
}

// What a series has come to so far.
class Count {
  public:
    explicit Count(const Console& console) : console_(console) {}

    [[nodiscard]] int Total() const { return good_ + bad_; }
    [[nodiscard]] int Bad() const { return bad_; }

    // A remote is done: says so at once, with the bell, since eyes and hands are elsewhere.
    void Add(const Answer& run) {
        const bool good = run.fields.at("complete").get<bool>();
        ++(good ? good_ : bad_);
        runs_.push_back({{"status", run.status}});
        for (const char* key : {"result", "complete", "version", "seconds"})
            runs_.back()[key] = run.fields.at(key);
        if (!console_.options.json) {
            const Phrase verdict = good ? Phrase{"riuscito", "good"} : Phrase{"non riuscito", "bad"};
            const Sentence line =
                Fill({"Telecomando {0}: {1}\n", "Remote {0}: {1}\n"}, {std::to_string(Total()), verdict});
            console_.notices.ClearProgress();
            if (!WriteResults(line.In(console_.language) + (good ? "" : run.text))) {
                throw Failure(kFailedOutput, Phrase{"I risultati non si possono scrivere.",
                                                    "The results can't be written."});
            }
        }
        console_.notices.RingBell();
    }

    [[nodiscard]] ordered_json Fields() const { return {{"good", good_}, {"bad", bad_}, {"runs", runs_}}; }

    [[nodiscard]] Sentence Summary() const {
        return Fill(
            {"Serie finita: {0} riusciti, {1} non riusciti\n", "End of the series: {0} good, {1} bad\n"},
            {std::to_string(good_), std::to_string(bad_)});
    }

  private:
    const Console& console_;
    int good_ = 0;
    int bad_ = 0;
    ordered_json runs_ = ordered_json::array();
};

// Waits until the remote is taken away; false if the series is to end.
bool AwaitRemoval(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& last) {
    Answer wait;
    wait.fields = BlankRunFields(console);
    Operate(console, machine, form, wait, [&] { form.AwaitRemoval(); });
    const auto& outcome = form.LatestOutcome();
    if (outcome && outcome->code == ResultCode::success) return true;
    if (!outcome || outcome->code != ResultCode::cancelled) last.status = wait.status;
    return false;
}

}  // namespace

ordered_json BlankRunFields(const Console& console) {
    ordered_json fields = BlankProgrammingFields(console.language);
    for (ordered_json& column : fields["columns"]) {
        if (console.options.verify) column["verification"] = nullptr;
    }
    if (console.options.series) fields["series"] = nullptr;
    if (console.options.consume) fields["consumed"] = nullptr;
    return fields;
}

std::optional<OperationOutcome> ProgramOne(const Console& console, ConsoleMachine& machine, FormWeb& form,
                                           RunLog& log, Answer& answer) {
    try {
        Operate(console, machine, form, answer, [&] { form.Command6_Click(0); });
        std::optional<OperationOutcome> programming = form.LatestOutcome();
        std::optional<OperationOutcome> verification;
        const bool succeeded = programming && programming->code == ResultCode::success;
        if (succeeded || (programming && programming->programming.writing))
            TellColumns(form, programming->programming, DescribeColumnOutcome, answer);
        if (succeeded && console.options.verify) verification = VerifyRun(console, machine, form, answer);
        ReportPanel(form, machine, answer);
        if (programming) ReportRun(console, form, *programming, verification, answer);
        return programming;
    } catch (const EndedAtOnce& end) {
        ReportPanel(form, machine, answer);
        ReportUnfinished(form, answer);
        answer.status = end.status;
        answer.Diagnose(form.HalfProgrammed() ? "Ended at once, with the remote half-programmed."
                                              : "Ended at once.");
        log.Add(answer, machine.Chosen());
        throw;
    }
}

void ProgramSeries(const Console& console, ConsoleMachine& machine, FormWeb& form, RunLog& log,
                   Answer& answer) {
    Count count(console);
    const int wanted = console.options.series.value_or(0);
    int endStatus = 0;
    for (;;) {
        Answer run;
        run.fields = BlankRunFields(console);
        const auto outcome = ProgramOne(console, machine, form, log, run);
        answer.fields = run.fields;
        if (outcome && MetRemote(*outcome)) {
            log.Add(run, machine.Chosen());
            count.Add(run);
            if (count.Total() == wanted || machine.Desktop().Interrupted()) break;
            Answer wait;
            if (AwaitRemoval(console, machine, form, wait)) continue;
            endStatus = wait.status;
            break;
        }
        if (outcome && outcome->code == ResultCode::remoteNotDetected)
            continue;  // the next one takes its time
        if (!outcome || outcome->code != ResultCode::cancelled) {
            endStatus = run.status;
            answer.Diagnose(run.diagnostic);
        }
        break;
    }
    answer.fields["series"] = count.Fields();
    answer.text = count.Summary().In(console.language);
    answer.status = endStatus != 0 ? endStatus : (count.Bad() > 0 ? kNotWhole : 0);
}

}  // namespace vento::console
