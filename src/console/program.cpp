#include <array>
#include <filesystem>
#include <string>
#include <system_error>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/notices.h"
#include "console/panel_report.h"
#include "console/program_run.h"
#include "console/run_log.h"
#include "panel/form_web.h"
#include "programme/fields.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

constexpr std::array kProgramArguments{
    ArgumentEntry{{"FILE", "FILE"}, {"Il file di programmazione", "The programme file"}}};

bool TakeSeries(Options& options, std::string_view value) {
    options.series = 0;
    if (value.empty()) return true;
    const auto count = ParseDecimal(value, 60000);
    if (!count || *count == 0) return false;
    options.series = *count;
    return true;
}

constexpr std::array kProgramOptions{
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
                [](Options& options, std::string_view) { return options.verify = true; }},
    OptionEntry{
        "series",
        '\0',
        OptionEntry::Value::behindEquals,
        {"QUANTI", "COUNT"},
        {"Programma un telecomando dopo l'altro, QUANTI o fino a Ctrl-C; ognuno va tolto prima del "
         "successivo",
         "Programme remote after remote, COUNT of them or until Ctrl-C; each is to be taken away before the "
         "next"},
        TakeSeries},
    kLogOption,
    kTransmitterOption};

constexpr std::array kProgramExamples{
    Example{"program VENTO-casa.qlb --consume",
            {"Programma il telecomando ed elimina il file, come fa la finestra.",
             "Programs the remote and deletes the file, as the window does."}},
    Example{"program VENTO-casa.qlb --trace traccia.jsonl",
            {"Conserva ogni passo, per l'assistenza.", "Keeps every step, for support."}},
    Example{"program VENTO-casa.qlb --series --strict --log lavoro.jsonl",
            {"Programma un telecomando dopo l'altro e tiene il registro della giornata.",
             "Programs remote after remote and keeps the record of the day."}},
};

void Program(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& answer) {
    if (!LoadProgramme(console, form, answer)) {
        ReportPanel(form, machine, answer);
        return;
    }
    RunLog log(console.options, machine.ForPanel().files);
    if (console.options.series) {
        ProgramSeries(console, machine, form, log, answer);
    } else {
        ProgramOne(console, machine, form, log, answer);
        log.Add(answer, machine.Chosen());
    }
}

// Closing the form deletes the programme file and says nothing of one that can't be deleted: a window's
// operator would see it, here nobody would.
void Consume(const Console& console, FormWeb& form, Answer& answer) {
    if (!console.options.consume) return;
    form.Form_Unload();
    const std::string file = console.options.Argument(0);
    std::error_code unknown;
    const auto type = std::filesystem::symlink_status(PathFromUtf8(file), unknown).type();
    const bool gone = type == std::filesystem::file_type::not_found;
    answer.fields["consumed"] = gone;
    if (gone) return;
    const Sentence stays = Fill({"{0} non è stato eliminato.", "{0} was not deleted."}, {file});
    console.notices.Error(
        stays,
        Phrase{"È protetto da scrittura, o non è un file comune, o la sua cartella non lo permette; se non "
               "serve più va eliminato a mano.",
               "It is write-protected, or no regular file, or its folder does not let it go; if it is no "
               "longer needed, delete it by hand."});
    answer.Diagnose(stays.In(Language::english));
}

void RunProgram(const Console& console, Answer& answer) {
    answer.fields = BlankRunFields(console);
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    form.Form_Load("");
    try {
        Program(console, machine, form, answer);
        machine.Finish();
    } catch (...) {
        Consume(console, form, answer);
        throw;
    }
    Consume(console, form, answer);
}

}  // namespace

constinit const CommandEntry kProgramCommand{
    "program",
    {"Inserisce un file di programmazione in un telecomando", "Put a programme file into a remote"},
    kProgramArguments,
    kProgramOptions,
    kProgramExamples,
    RunProgram};

}  // namespace vento::console
