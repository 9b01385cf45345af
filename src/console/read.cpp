#include "console/commands.h"
#include "console/console_machine.h"
#include "console/panel_report.h"
#include "panel/form_web.h"

namespace vento::console {
namespace {

constexpr std::array kReadOptions{kTransmitterOption};

void RunRead(const Console& console, Answer& answer) {
    answer.fields = BlankPanelFields(console.language);
    answer.fields.update(
        {{"version", nullptr}, {"free", nullptr}, {"sections", nlohmann::ordered_json::array()}});
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    form.Form_Load("");
    Operate(console, machine, form, answer, [&] { form.Command2_Click(); });
    ReportPanel(form, machine, answer);
    ReportReading(form, answer);
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kReadCommand{
    "read", {"Chiede a un telecomando che cosa contiene", "Ask a remote what it holds"}, {}, kReadOptions, {},
    RunRead};

}  // namespace vento::console
