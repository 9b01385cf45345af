#include <CLI/CLI.hpp>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/panel_report.h"
#include "panel/form_web.h"

namespace vento::console {
namespace {

void Declare(CLI::App& command, Options& options) {
    command.add_option("FILE", options.file, "The programme file")->required();
    command.add_flag("--consume", options.consume, "Delete FILE at the end, whatever came of it");
}

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

void Run(const Console& console, Answer& answer) {
    answer.fields = BlankPanelFields(ChosenLanguage(console.options));
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    const Closing closing(form, console.options.consume);
    form.Form_Load("");
    const LoadResult load = form.Aprifilevento(console.options.file);
    if (load.problem) {
        RefuseProgramme(console, *load.problem, form.PanelLanguage(), answer);
    } else {
        Operate(console, machine, form, answer, [&] { form.Command6_Click(0); });
    }
    ReportPanel(form, machine, answer);
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kProgramCommand{"program", "Put a programme file into a remote", Declare, Run};

}  // namespace vento::console
