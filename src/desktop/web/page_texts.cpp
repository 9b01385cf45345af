#include "desktop/web/page_texts.h"

#include <array>
#include <nlohmann/json.hpp>

#include "desktop/session.h"
#include "desktop/shown_text.h"

namespace vento::desktop::web {
namespace {

using nlohmann::json;

constexpr int kDotsPerInch = 96;  // of every screen, to a page

struct PageText {
    std::string_view key;
    Phrase text;
};

constexpr std::array kPageTexts{
    PageText{"ok", {"OK", "OK"}},
    PageText{"link", {"Trasmettitore", "Transmitter"}},
    PageText{"connect", {"COLLEGA", "CONNECT"}},
    PageText{"connectTip",
             {"Sceglie il trasmettitore fra quelli collegati a questo computer",
              "Chooses the transmitter among those connected to this computer"}},
    PageText{"saveRule", {"Salva 60-vento.rules", "Save 60-vento.rules"}},
    PageText{"saveTrace", {"Salva la traccia", "Save the trace"}},
    PageText{"saveTraceTip",
             {"Ogni passo sul collegamento nell'ultima operazione, come ventoctl --trace",
              "Every step on the link in the latest operation, as ventoctl --trace has them"}},
    PageText{"example", {"Apri il programma di esempio", "Open the example programme"}},
    PageText{"simulate", {"Prova senza trasmettitore", "Try it without a transmitter"}},
    PageText{"real", {"Usa un trasmettitore vero", "Use a real transmitter"}},
    PageText{"language", {"Lingua", "Language"}},
    PageText{"unforeseen", kUnforeseen},
    PageText{"afterUnforeseen",
             {"Si può riprovare. Se non va, ricarica la pagina.",
              "You can try again. If that does not work, reload the page."}},
};

constexpr std::array kEndTexts{
    PageText{"title", {"VENTO è chiuso", "VENTO is closed"}},
    PageText{"question",
             {"Eliminare da questo computer il file {0}?", "Delete the file {0} from this computer?"}},
    PageText{"delete", {"Elimina", "Delete"}},
    PageText{"keep", {"Conserva", "Keep"}},
    PageText{"deleted", {"Il file {0} è stato eliminato.", "The file {0} has been deleted."}},
    PageText{"kept",
             {"Il file {0} è rimasto su questo computer.", "The file {0} is still on this computer."}},
    PageText{"refused",
             {"Il browser non ha permesso di eliminare il file {0}, che è ancora su questo computer: "
              "eliminalo tu.",
              "The browser did not allow the file {0} to be deleted. It is still on this computer: delete it "
              "yourself."}},
    PageText{
        "forgotten",
        {"La pagina ha dimenticato il file {0}, ma il browser non lascia che lo elimini: è ancora su "
         "questo computer.",
         "The page has forgotten the file {0}, but the browser does not let it delete it: it is still on "
         "this computer."}},
    PageText{"again", {"Apri di nuovo", "Open again"}},
};

constexpr Phrase kInBrowsers{
    "Questo browser non permette alle pagine di usare un trasmettitore. Lo permettono i browser basati su "
    "Chromium 137 o successivo, come Chrome ed Edge, su un computer. Qui funziona la simulazione.",
    "This browser does not let pages use a transmitter. Browsers based on Chromium 137 or later do, such as "
    "Chrome and Edge, on a desktop computer. What works here is the simulation."};

json FontOf(const Font& font) {
    return {
        {"family", "\"" + std::string(font.face) + "\", \"" + std::string(font.fallback) + "\", sans-serif"},
        {"size", PixelsFromTwips(font.height, kDotsPerInch)},
        {"weight", font.bold ? "bold" : "normal"}};
}

json PlaceOf(const Rectangle& twips) {
    const Rectangle place = PixelsFromTwips(twips, kDotsPerInch);
    return {{"left", place.left}, {"top", place.top}, {"width", place.width}, {"height", place.height}};
}

std::string StyleOf(const Colour& colour) {
    return "rgb(" + std::to_string(colour.red) + " " + std::to_string(colour.green) + " " +
           std::to_string(colour.blue) + ")";
}

}  // namespace

std::string LinkText(LinkState state, Language language) {
    switch (state) {
        case LinkState::simulated:
            return Phrase{
                "Simulazione: né il trasmettitore né il telecomando sono veri. Si può trascinare qui "
                "uno scenario.",
                "Simulation: neither transmitter nor remote is real. A scenario can be dropped here."}
                .In(language);
        case LinkState::unreachable:
            return kInBrowsers.In(language);
        case LinkState::notGranted:
            return Phrase{"Trasmettitore: non collegato, o non ancora scelto. Collegalo e premi COLLEGA.",
                          "Transmitter: not connected, or not chosen yet. Plug it in and press CONNECT."}
                .In(language);
        case LinkState::unplugged:
            return Phrase{
                "Trasmettitore: scollegato. Ricollegalo; se qui non si vede, premi COLLEGA, perché il "
                "browser dimentica la scelta di un trasmettitore senza numero di serie.",
                "Transmitter: unplugged. Plug it in again; if it does not show up here, press "
                "CONNECT, as the browser forgets the choice of a transmitter without a serial "
                "number."}
                .In(language);
        case LinkState::forbidden:
            return Phrase{
                "Trasmettitore: collegato, ma il browser non può aprirlo. Chiudi gli altri programmi "
                "che lo usano e riprova.",
                "Transmitter: connected, but the browser can't open it. Close other programs that "
                "use it and try again."}
                .In(language);
        case LinkState::inUse:
            return Phrase{"Trasmettitore: in uso da un'altra scheda del browser",
                          "Transmitter: in use by another tab of the browser"}
                .In(language);
        case LinkState::ready:
            return Phrase{"Trasmettitore: collegato", "Transmitter: connected"}.In(language);
    }
    return {};
}

std::vector<Step> PermissionSteps(Language language) {
    return {
        {Phrase{
             "Su Linux di solito manca il permesso. Salva la regola udev con il pulsante qui sotto e, nella "
             "cartella in cui è finita, dai questi due comandi:",
             "On Linux it is mostly the permission that is missing. Save the udev rule by the button below, "
             "and in the folder where it went run these two commands:"}
             .In(language),
         {"sudo install -m 644 60-vento.rules /etc/udev/rules.d/",
          "sudo sh -c 'udevadm control --reload && udevadm trigger --subsystem-match=hidraw'"}},
        {Phrase{"Su un sistema senza logind la regola vale per il gruppo plugdev. Entra nel gruppo, poi esci "
                "dalla sessione e accedi di nuovo:",
                "On a system without logind the rule is for the group plugdev. Join the group, then log out "
                "and in again:"}
             .In(language),
         {"sudo usermod -aG plugdev \"$USER\""}},
        {Phrase{
             "Un browser installato come Snap o Flatpak può elencare il trasmettitore senza poterlo aprire: "
             "usa allora quello dei pacchetti del sistema.",
             "A browser that was installed as a Snap or Flatpak may list the transmitter and yet be unable "
             "to open it: then use one from the system's own packages."}
             .In(language),
         {}},
    };
}

std::string NothingChosenText(Language language) {
    return Phrase{"Nessun trasmettitore scelto", "No transmitter chosen"}.In(language);
}

std::string NothingChosenDetail(Language language) {
    return Phrase{
        "Se il browser non ne ha elencato nessuno, collega il trasmettitore a questo computer, prova "
        "un'altra porta USB e premi COLLEGA.",
        "If the browser has listed none, plug the transmitter into this computer, try another USB "
        "port, and press CONNECT."}
        .In(language);
}

std::string CloseGuidance(const std::string& file, Language language) {
    const Sentence asks =
        Fill({"Chiede se eliminare il file {0}", "Asks whether to delete the file {0}"}, {file});
    return ShownText(ToolTipOf(LayoutOf(ControlId::Command3), language) + "\n" + asks.In(language));
}

std::string ForeignFileText(Language language) {
    return Phrase{"VENTO apre file di programmazione (.qlb) e scenari (.json)",
                  "VENTO opens programme files (.qlb) and scenarios (.json)"}
        .In(language);
}

std::string_view ElementOf(ControlId id) {
    constexpr std::array<std::string_view, 12> kElements{
        "Image1",      "Line1",       "Command2",    "Command3", "Command4",     "Command6_0",
        "ListView1_0", "ListView1_1", "ListView1_2", "Label1",   "ProgressBar1", "hint"};
    return kElements.at(static_cast<std::size_t>(id));
}

std::string TextsJson(Language language) {
    json controls = json::array();
    for (const ControlLayout& each : ControlLayouts()) {
        controls.push_back({{"id", ElementOf(each.id)},
                            {"number", static_cast<int>(each.id)},
                            {"name", each.name.In(language)},
                            {"key", each.mnemonic.In(language)},
                            {"place", PlaceOf(each.place)},
                            {"font", FontOf(each.font)},
                            {"background", StyleOf(each.background)}});
    }
    json texts{{"tag", Phrase{"it", "en"}.In(language)},
               {"form", PlaceOf(kFormArea)},
               {"controls", std::move(controls)}};
    for (const auto& [key, text] : kPageTexts)
        texts[std::string(key)] = text.In(language);
    return texts.dump();
}

std::string EndJson(const std::string& file, Language language) {
    json texts;
    for (const auto& [key, text] : kEndTexts)
        texts[std::string(key)] = Fill(text, {ShownText(file)}).In(language);
    return texts.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace vento::desktop::web
