#include "console/help.h"

#include <gcrypt.h>

#include <CLI/Version.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "commit.h"
#include "console/failure.h"
#include "console/text_layout.h"
#include "panel/message_table.h"
#include "platform/terminal.h"

namespace vento::console {
namespace {

constexpr std::size_t kWidest = 100;     // columns beyond which lines are hard to read
constexpr std::size_t kNarrowest = 20;   // columns below which nothing is wrapped any more
constexpr std::size_t kWidestTerm = 22;  // a longer term has its text in the next line

constexpr std::array kStatuses{
    StatusEntry{"0", {"fatto", "done"}},
    StatusEntry{
        "1",
        {"con --strict: un avvertimento di check, o una colonna che program ha perso; con diff: una "
         "differenza",
         "with --strict: a warning of check, or a column that program has lost; with diff: a difference"}},
    StatusEntry{
        "2",
        {"nessun trasmettitore, o nessuno che si possa aprire", "no transmitter, or none that may be opened"},
        true},
    StatusEntry{"3", {"il telecomando non risponde", "the remote does not answer"}, true},
    StatusEntry{"5",
                {"nessun codice da inviare, o il telecomando non dà la tabella delle sezioni",
                 "no code to send, or the remote does not give its section table"},
                true},
    StatusEntry{
        "6",
        {"il telecomando non dà il numero delle sezioni", "the remote does not give its section count"},
        true},
    StatusEntry{
        "9", {"il trasmettitore è scomparso all'inizio", "the transmitter was gone at the beginning"}, true},
    StatusEntry{"10",
                {"nessuna colonna ha la lista che questo telecomando richiede",
                 "no column has the list that this remote takes"},
                true},
    StatusEntry{
        "11", {"il telecomando non conferma la fine", "the remote does not acknowledge the end"}, true},
    StatusEntry{
        "12", {"il telecomando non dà la sua versione", "the remote does not give its version"}, true},
    StatusEntry{"13", {"annullato con Ctrl-C", "cancelled by Ctrl-C"}, true},
    StatusEntry{"15",
                {"il programma, o ciò che il telecomando dice di sé, non è utilizzabile",
                 "the programme, or what the remote says of itself, can't be used"},
                true},
    StatusEntry{"18",
                {"una sezione scritta non ha superato la verifica",
                 "a section that was written failed its verification"},
                true},
    StatusEntry{"19", {"la prima sezione non si attiva", "the first section can't be activated"}, true},
    StatusEntry{"21",
                {"il telecomando non dà i segni delle sezioni", "the remote does not give its section flags"},
                true},
    StatusEntry{"64", {"uso sbagliato", "wrong usage"}},
    StatusEntry{"65",
                {"un programma, uno scenario o una chiave inutilizzabile; un errore del codec",
                 "a programme, scenario or key that can't be used; an error of the codec"}},
    StatusEntry{"66", {"un file da leggere che non si legge", "an input file that can't be read"}},
    StatusEntry{"70", {"un errore imprevisto", "anything unforeseen"}},
    StatusEntry{"73",
                {"risultati, traccia, immagine o altro file che non si scrive",
                 "results, a trace, an image or another file that can't be written"}},
    StatusEntry{"130",
                {"terminato subito dal secondo Ctrl-C; 128 + n dal segnale n",
                 "ended at once by a second Ctrl-C; 128 + n by signal n"}},
};

constexpr std::array kGeneralExamples{
    Example{"program VENTO-casa.qlb",
            {"Programma il telecomando posto davanti al trasmettitore.",
             "Programs the remote in front of the transmitter."}},
    Example{"check VENTO-casa.qlb",
            {"Dice che cosa contiene il file, o che cosa non va.",
             "Says what the file holds, or what is wrong with it."}},
    Example{"read --json",
            {"Legge il telecomando, per un altro programma.", "Reads the remote, for another program."}},
    Example{"program VENTO-casa.qlb --simulate",
            {"Prova tutto senza trasmettitore né telecomando.",
             "Tries everything without a transmitter or a remote."}},
};

constexpr Phrase kDescription{"Inserisce le tabelle di codici in un telecomando, e le rilegge.",
                              "Puts code tables into a remote control, and reads them back."};
constexpr Phrase kOutputs{
    "I risultati vanno sullo standard output, tutto il resto sullo standard error. Ctrl-C annulla l'attesa "
    "del telecomando. I colori mancano dove NO_COLOR è impostata.",
    "Results go to standard output, everything else to standard error. Ctrl-C cancels the wait for the "
    "remote. Colours are left out where NO_COLOR is set."};

// Puts a help text together, for one language and one width.
class Page {
  public:
    Page(Language language, std::size_t columns)
        : language_(language),
          width_(columns < kNarrowest ? std::string::npos : std::min(columns - 1, kWidest)) {}

    void Paragraph(const std::string& text, std::size_t indent = 0) {
        const std::size_t width = width_ == std::string::npos ? width_ : width_ - indent;
        for (const std::string& line : Wrap(text, width))
            text_ += std::string(indent, ' ') + line + "\n";
    }

    void Heading(const Phrase& phrase) {
        text_ += "\n";
        Paragraph(phrase.In(language_) + ":");
    }

    void Term(const std::string& term, const std::string& meaning, std::size_t termWidth) {
        const std::size_t indent = width_ < 2 * termWidth ? 6 : termWidth + 4;
        std::string first = "  " + term;
        const bool below = Width(first) + 2 > indent;
        if (below) {
            Paragraph(term, 2);
            Paragraph(meaning, indent);
            return;
        }
        const std::size_t before = text_.size();
        Paragraph(meaning, indent);
        text_.replace(before, indent, Pad(first, indent));
    }

    [[nodiscard]] std::string In(const Phrase& phrase) const { return phrase.In(language_); }
    [[nodiscard]] std::string Text() const { return text_; }

  private:
    Language language_;
    std::size_t width_;
    std::string text_;
};

std::size_t TermWidth(const std::vector<std::string>& terms) {
    std::size_t widest = 0;
    for (const std::string& term : terms) {
        if (Width(term) <= kWidestTerm) widest = std::max(widest, Width(term));
    }
    return widest;
}

void ShowOptions(Page& page, const Phrase& heading, std::span<const OptionEntry> options, Language language) {
    if (options.empty()) return;
    page.Heading(heading);
    for (const OptionEntry& option : options)
        page.Term(Spelling(option, language), page.In(option.summary), kWidestTerm);
}

void ShowExamples(Page& page, std::span<const Example> examples) {
    if (examples.empty()) return;
    page.Heading({"Esempi", "Examples"});
    for (const Example& example : examples) {
        page.Paragraph("ventoctl " + std::string(example.line), 2);
        page.Paragraph(page.In(example.meaning), 6);
    }
}

std::string CommandHelp(const CommandEntry& command, Language language, std::size_t columns) {
    Page page(language, columns);
    page.Paragraph(Phrase{"Uso: ", "Usage: "}.In(language) + "ventoctl " + Synopsis(command, language));
    page.Paragraph("");
    page.Paragraph(page.In(command.summary) + ".");
    if (!command.arguments.empty()) page.Heading({"Argomenti", "Arguments"});
    std::vector<std::string> names;
    for (const ArgumentEntry& argument : command.arguments)
        names.push_back(page.In(argument.name));
    for (const ArgumentEntry& argument : command.arguments)
        page.Term(page.In(argument.name), page.In(argument.summary), TermWidth(names));
    ShowOptions(page, {"Opzioni", "Options"}, command.options, language);
    ShowOptions(page, {"Opzioni di tutti i comandi", "Options of every command"}, CommonOptions(), language);
    ShowExamples(page, command.examples);
    return page.Text();
}

std::string GeneralHelp(Language language, std::size_t columns) {
    Page page(language, columns);
    page.Paragraph(page.In(kDescription));
    page.Paragraph("");
    page.Paragraph(page.In(
        {"Uso: ventoctl COMANDO [ARGOMENTO…] [OPZIONE…]", "Usage: ventoctl COMMAND [ARGUMENT…] [OPTION…]"}));
    page.Heading({"Comandi", "Commands"});
    for (const CommandEntry* command : kCommands)
        page.Term(std::string(command->name), page.In(command->summary), 10);
    page.Paragraph(page.In({"'ventoctl help COMANDO' dice di più di un comando.",
                            "'ventoctl help COMMAND' tells more of a command."}),
                   2);
    ShowOptions(page, {"Opzioni di tutti i comandi", "Options of every command"}, CommonOptions(), language);
    page.Heading({"Stato d'uscita e testo", "Exit status and text"});
    for (const StatusEntry& status : kStatuses)
        page.Term(std::string(status.status), DescribeStatus(status, language), 3);
    ShowExamples(page, kGeneralExamples);
    page.Paragraph("");
    page.Paragraph(page.In(kOutputs));
    return page.Text();
}

void RunHelp(const Console& console, Answer& answer) {
    const std::string name = console.options.Argument(0);
    const std::size_t columns = console.terminal.Columns();
    const CommandEntry* command = FindCommand(name);
    if (!name.empty() && command == nullptr) RefuseCommand(name);
    answer.text = command != nullptr ? CommandHelp(*command, console.language, columns)
                                     : GeneralHelp(console.language, columns);
    answer.fields["text"] = answer.text;
}

std::string JsonVersion() {
    return std::to_string(NLOHMANN_JSON_VERSION_MAJOR) + "." + std::to_string(NLOHMANN_JSON_VERSION_MINOR) +
           "." + std::to_string(NLOHMANN_JSON_VERSION_PATCH);
}

void RunVersion(const Console&, Answer& answer) {
    answer.fields = {{"version", VENTO_VERSION}, {"commit", nullptr}, {"compiler", VENTO_COMPILER}};
    if (!kCommit.empty()) answer.fields["commit"] = kCommit;
    answer.fields["libraries"] = {
        {"CLI11", CLI11_VERSION}, {"libgcrypt", GCRYPT_VERSION}, {"nlohmann-json", JsonVersion()}};
    answer.text = "ventoctl " VENTO_VERSION "\n";
}

constexpr std::array kHelpArguments{ArgumentEntry{
    {"COMANDO", "COMMAND"}, {"Il comando di cui dire di più", "The command to tell more of"}, false}};

}  // namespace

std::span<const StatusEntry> Statuses() {
    return kStatuses;
}

std::string DescribeStatus(const StatusEntry& status, Language language) {
    std::string cause = status.cause.In(language);
    if (!status.isResult) return cause;
    int code = 0;
    std::from_chars(status.status.data(), status.status.data() + status.status.size(), code);
    return Printable(MessageFor(static_cast<ResultCode>(code), language)) + ": " + cause;
}

std::string Synopsis(const CommandEntry& command, Language language) {
    std::string text(command.name);
    for (const ArgumentEntry& argument : command.arguments) {
        const std::string name = argument.name.In(language) + (argument.repeats ? "…" : "");
        text += argument.required ? " " + name : " [" + name + "]";
    }
    return text + Phrase{" [OPZIONE…]", " [OPTION…]"}.In(language);
}

std::string Spelling(const OptionEntry& option, Language language) {
    std::string text = option.letter == '\0' ? "" : std::string{'-', option.letter, ',', ' '};
    text += "--" + std::string(option.name);
    const std::string value = option.valueName.In(language);
    if (option.value == OptionEntry::Value::required) text += " " + value;
    if (option.value == OptionEntry::Value::behindEquals) text += "[=" + value + "]";
    return text;
}

constinit const CommandEntry kHelpCommand{
    "help", {"Spiega il programma o un comando", "Explain the program or a command"}, kHelpArguments, {}, {},
    RunHelp};
constinit const CommandEntry kVersionCommand{
    "version", {"Mostra la versione", "Print the version"}, {}, {}, {}, RunVersion};

}  // namespace vento::console
