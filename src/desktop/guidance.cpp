#include "desktop/guidance.h"

#include <cmath>

#include "desktop/shown_text.h"

namespace vento::desktop {
namespace {

constexpr int kCancelIndex = 3;

constexpr Phrase kCancelHint{"Esc: annulla", "Esc: cancel"};
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

/// How much of the transfer is done, in percent.
int Percent(const ProgressBar& bar) {
    const float range = bar.Maximum() - bar.Minimum();
    return range > 0 ? static_cast<int>(std::floor((bar.Value() - bar.Minimum()) * 100 / range)) : 0;
}

std::string OfColumn(std::size_t column, const FormWeb& form, Language language) {
    for (const std::string& label : form.ListView1.at(column).Items())
        return label;
    if (!form.LatestLoadProblem()) return {};
    return Fact(kNotLoaded, DescribeLoadProblem(*form.LatestLoadProblem()).In(language), language) + "\n" +
           form.Label2.Caption();
}

/// What is to be said of a control at this moment, below what is always to be said.
std::string Now(ControlId id, FormWeb& form, Language language) {
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
            return form.Operating() ? kNotNow.In(language) : "";
        case ControlId::ListView1_0:
        case ControlId::ListView1_1:
        case ControlId::ListView1_2:
            return OfColumn(static_cast<std::size_t>(id) - static_cast<std::size_t>(ControlId::ListView1_0),
                            form, language);
        case ControlId::ProgressBar1:
            return std::to_string(Percent(form.ProgressBar1)) + " %";
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
    return form.Command6(kCancelIndex).Enabled() ? Help::cancel : Help::none;
}

std::string HintText(Help help, Language language) {
    return help == Help::cancel ? kCancelHint.In(language) : "";
}

bool IsDimmed(ControlId id, const FormWeb& form) {
    return form.Operating() && (id == ControlId::Command2 || id == ControlId::Command4);
}

std::string GuidanceFor(ControlId id, FormWeb& form) {
    const Language language = form.PanelLanguage();
    const ControlLayout& layout = LayoutOf(id);
    const bool isColumn = id >= ControlId::ListView1_0 && id <= ControlId::ListView1_2;
    std::string text = isColumn ? layout.name.In(language) : ToolTipOf(layout, language);
    const std::string now = Now(id, form, language);
    if (!text.empty() && !now.empty()) text += isColumn ? ": " : "\n";
    return ShownText(text + now);
}

}  // namespace vento::desktop
