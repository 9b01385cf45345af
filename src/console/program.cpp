#include <array>
#include <optional>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/failure.h"
#include "console/panel_report.h"
#include "panel/advice.h"
#include "panel/form_web.h"

namespace vento::console {
namespace {

constexpr std::array kArguments{
    ArgumentEntry{{"FILE", "FILE"}, {"Il file di programmazione", "The programme file"}}};

constexpr std::array kOptions{
    OptionEntry{
        "consume",
        '\0',
        OptionEntry::Value::none,
        {"", ""},
        {"Alla fine elimina FILE, qualunque sia l'esito", "Delete FILE at the end, whatever came of it"},
        [](Options& options, std::string_view) { return options.consume = true; }},
    OptionEntry{"strict",
                '\0',
                OptionEntry::Value::none,
                {"", ""},
                {"Se una colonna è andata persa termina con lo stato 1, anche se il resto è riuscito",
                 "End with status 1 if a column was lost, even if the rest has succeeded"},
                [](Options& options, std::string_view) { return options.strict = true; }},
    OptionEntry{"verify",
                '\0',
                OptionEntry::Value::none,
                {"", ""},
                {"Dopo la programmazione prova che cosa contiene il telecomando, come fa verify",
                 "Prove what the remote holds after programming, as verify does"},
                [](Options& options, std::string_view) { return options.verify = true; }}};

constexpr std::array kExamples{
    Example{"program VENTO-casa.qlb --consume",
            {"Programma il telecomando ed elimina il file, come fa la finestra.",
             "Programs the remote and deletes the file, as the window does."}},
    Example{"program VENTO-casa.qlb --trace traccia.jsonl",
            {"Conserva ogni passo, per l'assistenza.", "Keeps every step, for support."}},
};

// Closes the form at the end, however that comes, if the programme is to be consumed.
class Closing {
  public:
    Closing(FormWeb& form, bool consume) : form_(form), consume_(consume) {}
    ~Closing() {
        if (consume_) form_.Form_Unload();
    }
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;
    Closing(Closing&&) = delete;
    Closing& operator=(Closing&&) = delete;

  private:
    FormWeb& form_;
    bool consume_;
};

void Report(const Console& console, const FormWeb& form, const OperationOutcome& programming,
            const std::optional<OperationOutcome>& verification, Answer& answer) {
    const bool lost = programming.programming.Incomplete();
    const bool succeeded = programming.code == ResultCode::success;
    ReportColumns(form, programming.programming, "outcome", answer);
    if (verification) ReportColumns(form, verification->programming, "verification", answer);
    answer.fields["complete"] = succeeded && !lost && answer.status == 0;
    if (succeeded && lost && console.options.strict && answer.status == 0) answer.status = kNotWhole;
}

// Programmes one remote, and proves it if that is asked for.
void ProgramOne(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& answer) {
    Operate(console, machine, form, answer, [&] { form.Command6_Click(0); });
    const auto programming = form.LatestOutcome();
    std::optional<OperationOutcome> verification;
    if (programming) {
        const bool succeeded = programming->code == ResultCode::success;
        if (succeeded || programming->programming.writing)
            TellColumns(form, programming->programming, DescribeColumnOutcome, answer);
        if (succeeded && console.options.verify) {
            Operate(console, machine, form, answer, [&] { form.Verify(); });
            verification = form.LatestOutcome();
            if (verification) TellColumns(form, verification->programming, DescribeVerification, answer);
        }
    }
    ReportPanel(form, machine, answer);
    if (programming) Report(console, form, *programming, verification, answer);
}

void Run(const Console& console, Answer& answer) {
    answer.fields = BlankProgrammingFields(console.language);
    if (console.options.verify) {
        for (auto& column : answer.fields["columns"])
            column["verification"] = nullptr;
    }
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    const Closing closing(form, console.options.consume);
    form.Form_Load("");
    if (LoadProgramme(console, form, answer)) {
        ProgramOne(console, machine, form, answer);
    } else {
        ReportPanel(form, machine, answer);
    }
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kProgramCommand{
    "program",
    {"Inserisce un file di programmazione in un telecomando", "Put a programme file into a remote"},
    kArguments,
    kOptions,
    kExamples,
    Run};

}  // namespace vento::console
