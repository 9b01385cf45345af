#include "desktop/guidance.h"

#include <algorithm>
#include <vector>

#include "desktop/shown_text.h"
#include "panel/advice.h"

namespace vento::desktop {
namespace {

constexpr Phrase kCancelHint{"Esc: annulla", "Esc: cancel"};
constexpr Phrase kDetailsHint{"F1: dettagli", "F1: details"};
constexpr Phrase kNothingWritten{"Nel telecomando non è stato scritto nulla.",
                                 "Nothing was written to the remote."};
constexpr Phrase kRemote{"Telecomando: versione {0}, lista {1}", "Remote: version {0}, list {1}"};
constexpr Phrase kColumnInWork{"Colonna {0}, {1} %", "Column {0}, {1} %"};
constexpr Phrase kNotNow{"Ora no: un'operazione è in corso", "Not now: an operation is running"};
constexpr Phrase kOpenFile{"File aperto: {0}", "Open file: {0}"};
constexpr Phrase kDeletes{"Elimina il file {0}", "Deletes the file {0}"};
constexpr Phrase kHalfWritten{
    "Chiudere adesso lascia nel telecomando una sezione incompleta, che sarà da programmare di nuovo",
    "To close now leaves an incomplete section in the remote, which has to be programmed again"};
constexpr Phrase kNotLoaded{"Il file non è stato caricato: {0}", "The file was not loaded: {0}"};

std::string Fact(const Phrase& pattern, const std::string& value, Language language) {
    return Fill(pattern, {value}).In(language);
}

std::string OfBar(const FormWeb& form, Language language) {
    const std::string percent = std::to_string(form.ProgressBar1.Percent());
    const auto column = form.ColumnInWork();
    return column ? Fill(kColumnInWork, {kSections[*column].name, percent}).In(language) : percent + " %";
}

std::string OfColumn(std::size_t column, const FormWeb& form, Language language) {
    for (const std::string& label : form.ListView1.at(column).Items())
        return label;
    if (!form.LatestLoadProblem()) return {};
    return Fact(kNotLoaded, DescribeLoadProblem(*form.LatestLoadProblem()).In(language), language) + "\n" +
           form.Label2.Caption();
}

Phrase AboutTransmitter(platform::Presence presence) {
    switch (presence) {
        case platform::Presence::absent:
            return {"Trasmettitore: non collegato", "Transmitter: not connected"};
        case platform::Presence::forbidden:
            return {"Trasmettitore: collegato, ma non hai il permesso di usarlo",
                    "Transmitter: connected, but you are not allowed to use it"};
        case platform::Presence::inUse:
            return {"Trasmettitore: in uso da un altro programma", "Transmitter: in use by another program"};
        case platform::Presence::ready:
            return {"Trasmettitore: collegato", "Transmitter: connected"};
        case platform::Presence::unknown:
            break;
    }
    return {"", ""};
}

/// What is to be said of a control at this moment, below what is always to be said.
std::string Now(ControlId id, FormWeb& form, platform::Presence transmitter, Language language) {
    const std::string& path = form.Label2.Caption();
    switch (id) {
        case ControlId::Command4:
            if (IsDimmed(id, form)) return kNotNow.In(language);
            return path.empty() ? "" : Fact(kOpenFile, path, language);
        case ControlId::Command3:
            if (form.ProgressBar1.Visible()) return kHalfWritten.In(language);
            return path.empty() ? "" : Fact(kDeletes, path, language);
        case ControlId::Command2:
        case ControlId::Command6_0:
            return (form.Operating() ? kNotNow : AboutTransmitter(transmitter)).In(language);
        case ControlId::ListView1_0:
        case ControlId::ListView1_1:
        case ControlId::ListView1_2:
            return OfColumn(static_cast<std::size_t>(id) - static_cast<std::size_t>(ControlId::ListView1_0),
                            form, language);
        case ControlId::ProgressBar1:
            return OfBar(form, language);
        case ControlId::Label1:
            return HintText(HelpFor(form), language);
        case ControlId::Image1:
        case ControlId::Line1:
        case ControlId::hint:
            break;
    }
    return {};
}

}  // namespace

Help HelpFor(FormWeb& form) {
    if (form.Command6(FormWeb::kCancelHolder).Enabled()) return Help::cancel;
    const auto& outcome = form.LatestOutcome();
    const bool isFailure =
        outcome && outcome->code != ResultCode::success && outcome->code != ResultCode::cancelled;
    return isFailure && !form.Operating() && !DetailsOf(form).empty() ? Help::details : Help::none;
}

std::string HintText(Help help, Language language) {
    switch (help) {
        case Help::cancel:
            return kCancelHint.In(language);
        case Help::details:
            return kDetailsHint.In(language);
        case Help::none:
            break;
    }
    return {};
}

std::string DetailsOf(const FormWeb& form) {
    if (!form.LatestOutcome()) return {};
    const OperationOutcome& outcome = *form.LatestOutcome();
    const ProgrammingOutcome& run = outcome.programming;
    std::vector<Sentence> lines{outcome.diagnostic};
    if (run.version && run.list) {
        lines.push_back(Fill(kRemote, {VersionText(*run.version), std::string(1, *run.list)}));
    }
    const bool isProgramming = run.version || std::ranges::any_of(run.columns, &ColumnOutcome::selected);
    if (isProgramming && !run.writing) lines.emplace_back(kNothingWritten);
    for (std::size_t c = 0; run.writing && c < kColumns; ++c)
        lines.push_back(DescribeColumn(run, c));
    std::string text;
    for (const Sentence& line : lines) {
        if (!line.Empty()) text += line.In(form.PanelLanguage()) + "\n";
    }
    return ShownText(text);
}

bool IsDimmed(ControlId id, const FormWeb& form) {
    return form.Operating() && (id == ControlId::Command2 || id == ControlId::Command4);
}

std::string GuidanceFor(ControlId id, FormWeb& form, platform::Presence transmitter) {
    const Language language = form.PanelLanguage();
    const ControlLayout& layout = LayoutOf(id);
    const bool isColumn = id >= ControlId::ListView1_0 && id <= ControlId::ListView1_2;
    std::string text = isColumn ? layout.name.In(language) : ToolTipOf(layout, language);
    const std::string now = Now(id, form, transmitter, language);
    if (!text.empty() && !now.empty()) text += isColumn ? ": " : "\n";
    return ShownText(text + now);
}

}  // namespace vento::desktop
