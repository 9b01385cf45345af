#include <array>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/panel_report.h"
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
                [](Options& options, std::string_view) { return options.strict = true; }}};

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

void Run(const Console& console, Answer& answer) {
    answer.fields = BlankPanelFields(console.language);
    answer.fields.update({{"version", nullptr}, {"complete", false}});
    for (auto& column : answer.fields["columns"])
        column["outcome"] = nullptr;
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    const Closing closing(form, console.options.consume);
    form.Form_Load("");
    const LoadResult load = form.Aprifilevento(console.options.Argument(0));
    if (load.problem) {
        RefuseProgramme(console, *load.problem, form.PanelLanguage(), answer);
    } else {
        Operate(console, machine, form, answer, [&] { form.Command6_Click(0); });
    }
    ReportPanel(form, machine, answer);
    ReportProgramming(form, console, answer);
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
