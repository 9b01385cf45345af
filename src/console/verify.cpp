#include <array>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/panel_report.h"
#include "console/run_log.h"
#include "panel/advice.h"
#include "panel/form_web.h"

namespace vento::console {
namespace {

constexpr std::array kVerifyArguments{
    ArgumentEntry{{"FILE", "FILE"}, {"Il file di programmazione", "The programme file"}}};

constexpr std::array kVerifyOptions{kLogOption, kTransmitterOption};

constexpr std::array kVerifyExamples{
    Example{"verify VENTO-casa.qlb",
            {"Dice colonna per colonna se il telecomando contiene quel programma.",
             "Says column by column whether the remote holds that programme."}}};

void Verify(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& answer) {
    RunLog log(console.options, machine.ForPanel().files);
    Operate(console, machine, form, answer, [&] { form.Verify(); });
    ReportPanel(form, machine, answer);
    if (const auto& outcome = form.LatestOutcome()) {
        ReportColumns(form, outcome->programming, "outcome", answer);
        answer.fields["complete"] = outcome->code == ResultCode::success;
        const bool looked =
            outcome->code == ResultCode::success || outcome->code == ResultCode::verificationFailed;
        if (looked) TellColumns(form, outcome->programming, DescribeVerification, answer);
    }
    log.Add(answer, machine.Chosen());
}

void RunVerify(const Console& console, Answer& answer) {
    answer.fields = BlankProgrammingFields(console.language);
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    form.Form_Load("");
    if (LoadProgramme(console, form, answer)) {
        Verify(console, machine, form, answer);
    } else {
        ReportPanel(form, machine, answer);
    }
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kVerifyCommand{
    "verify",
    {"Prova che un telecomando contiene un file di programmazione, senza scrivere",
     "Prove that a remote holds a programme file, without writing"},
    kVerifyArguments,
    kVerifyOptions,
    kVerifyExamples,
    RunVerify};

}  // namespace vento::console
