#include "console/commands.h"
#include "console/console_machine.h"
#include "console/panel_report.h"
#include "panel/form_web.h"

namespace vento::console {
namespace {

void Declare(CLI::App&, Options&) {}

void Run(const Console& console, Answer& answer) {
    answer.fields = BlankPanelFields(ChosenLanguage(console.options));
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    form.Form_Load("");
    Operate(console, machine, form, answer, [&] { form.Command2_Click(); });
    ReportPanel(form, machine, answer);
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kReadCommand{"read", "Ask a remote what it holds", Declare, Run};

}  // namespace vento::console
