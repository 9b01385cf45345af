#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "desktop/qt/look.h"

namespace vento::desktop::qt {
namespace {

// What can be seen of the toolkit's own in this program: its file dialog, and the menus of its texts. Its
// whole translation is a package that is not installed everywhere.
using Pair = std::pair<std::string_view, std::string_view>;

constexpr auto kItalian = std::to_array<Pair>({
    {"Look in:", "Cerca in:"},
    {"Back", "Indietro"},
    {"Go back", "Torna indietro"},
    {"Forward", "Avanti"},
    {"Go forward", "Vai avanti"},
    {"Parent Directory", "Cartella superiore"},
    {"Go to the parent directory", "Vai alla cartella superiore"},
    {"Create New Folder", "Nuova cartella"},
    {"Create a New Folder", "Crea una nuova cartella"},
    {"List View", "Elenco"},
    {"Change to list view mode", "Mostra come elenco"},
    {"Detail View", "Dettagli"},
    {"Change to detail view mode", "Mostra con i dettagli"},
    {"Sidebar", "Barra laterale"},
    {"List of places and bookmarks", "Elenco di posizioni e segnalibri"},
    {"Files", "File"},
    {"Files of type:", "Tipo di file:"},
    {"File &name:", "&Nome file:"},
    {"&File name:", "&Nome file:"},
    {"&Open", "&Apri"},
    {"Open", "Apri"},
    {"&Choose", "&Scegli"},
    {"&Cancel", "A&nnulla"},
    {"Cancel", "Annulla"},
    {"&OK", "&OK"},
    {"OK", "OK"},
    {"Computer", "Computer"},
    {"Recent Places", "Posizioni recenti"},
    {"Name", "Nome"},
    {"Size", "Dimensione"},
    {"Kind", "Tipo"},
    {"Type", "Tipo"},
    {"Date Modified", "Ultima modifica"},
    {"%1 bytes", "%1 byte"},
    {"%1 byte(s)", "%1 byte"},
    {"Drive", "Unità"},
    {"File", "File"},
    {"%1 File", "File %1"},
    {"Folder", "Cartella"},
    {"File Folder", "Cartella"},
    {"Alias", "Collegamento"},
    {"Shortcut", "Collegamento"},
    {"Unknown", "Sconosciuto"},
    {"Show &hidden files", "Mostra i file &nascosti"},
    {"&New Folder", "&Nuova cartella"},
    {"New Folder", "Nuova cartella"},
    {"&Rename", "&Rinomina"},
    {"&Delete", "&Elimina"},
    {"Remove", "Rimuovi"},
    {"Delete", "Elimina"},
    {"Are you sure you want to delete '%1'?", "Eliminare '%1'?"},
    {"Could not delete directory.", "Impossibile eliminare la cartella."},
    {"'%1' is write protected.\nDo you want to delete it anyway?",
     "'%1' è protetto da scrittura.\nEliminarlo lo stesso?"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.",
     "%1\nFile non trovato.\nControlla che il nome sia giusto."},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
     "%1\nCartella non trovata.\nControlla che il nome sia giusto."},
    {"&Yes", "&Sì"},
    {"&No", "&No"},
    {"&Undo", "&Annulla"},
    {"&Redo", "&Ripeti"},
    {"Cu&t", "&Taglia"},
    {"&Copy", "&Copia"},
    {"&Paste", "&Incolla"},
    {"Select All", "Seleziona tutto"},
});

class ItalianTexts : public QTranslator {
  public:
    using QTranslator::QTranslator;

    [[nodiscard]] QString translate(const char* /*context*/, const char* text, const char* /*disambiguation*/,
                                    int /*number*/) const override {
        const auto* const found = std::ranges::find(kItalian, std::string_view(text), &Pair::first);
        return found == std::end(kItalian) ? QString() : Text(found->second);
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

/// The application owns it from here on.
void Install(std::unique_ptr<QTranslator> translator) {
    translator->setParent(QCoreApplication::instance());
    QCoreApplication::installTranslator(translator.release());
}

}  // namespace

void TranslateToolkit(Language language) {
    if (language != Language::italian) return;
    auto installed = std::make_unique<QTranslator>();
    if (installed->load("qtbase_it", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        Install(std::move(installed));
    Install(std::make_unique<ItalianTexts>());  // is asked first
}

}  // namespace vento::desktop::qt
