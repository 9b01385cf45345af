#include "panel/message_table.h"

namespace vento {

// Texts are exact to the letter, spelling included. In row 15 the control character U+008F follows the
// accented letter.
const std::array<std::array<std::string_view, kMessageColumns>, kMessageRows> MessageTable =
    std::to_array<std::array<std::string_view, kMessageColumns>>({
        {"1", "0", "Programmazione eseguita con successo"},
        {"1", "1", "Firmware Ok"},
        {"1", "2", "Programmatore non collegato"},
        {"1", "3", "Telecomando non rilevato, posizionare il telecomando di fronte al trasmettitore"},
        {"1", "4", "Errore 5"},
        {"1", "5", "Errore 6"},
        {"1", "6", "Errore 7"},
        {"1", "7", "Errore 8"},
        {"1", "8", "Errore 9"},
        {"1", "9", "Errore 10"},
        {"1", "10", "Errore 11"},
        {"1", "11", "Errore 12"},
        {"1", "12", "Errore 13"},
        {"1", "13", "Programmazione annullata"},
        {"1", "14", "Errore 15"},
        {"1", "15",
         "Si \u00E8"
         "\u008F"
         " verificato un errore! Ripetere la programmazione"},
        {"1", "16", "Errore 17"},
        {"1", "17", "Errore 18"},
        {"1", "18", "Errore 19"},
        {"1", "19", "Errore 20"},
        {"1", "20",
         "Posizionare il telecomando di fronte al trasmettitore entro 1 minuto. Sincronizzazione in corso"},
        {"1", "21", "Errore 22"},
        {"1", "0", "APRI"},
        {"1", "1", "PROGRAMMA"},
        {"1", "2", "Leggi Programmazione"},
        {"1", "3", "CHIUDI"},
        {"2", "0", "Operation succesfully completed"},
        {"2", "1", "Firmware Ok"},
        {"2", "2", "USB not connected"},
        {"2", "3", "Remote not detected, place the remote in front of the transmitter"},
        {"2", "4", "Error 5"},
        {"2", "5", "Error 6"},
        {"2", "6", "Error 7"},
        {"2", "7", "Error 8"},
        {"2", "8", "Error 9"},
        {"2", "9", "Error 10"},
        {"2", "10", "Error 11"},
        {"2", "11", "Error 12"},
        {"2", "12", "Error 13"},
        {"2", "13", "Programming canceled"},
        {"2", "14", "Error 15"},
        {"2", "15", "Attention an error occurred! Repeat programming"},
        {"2", "16", "Error 17"},
        {"2", "17", "Error 18"},
        {"2", "18", "Error 19"},
        {"2", "19", "Error 20"},
        {"2", "20",
         "Place the remote control in front of the transmitter within 1 minute. Syncronization in progress"},
        {"2", "21", "Error 22"},
        {"2", "0", "OPEN"},
        {"2", "1", "PROGRAM"},
        {"2", "2", "CODE READING"},
        {"2", "3", "CLOSE"},
    });

namespace {

// Rows of result codes in each language; the captions behind them are not for results.
constexpr std::size_t kCodeRows = 22;

std::string_view TextAt(std::size_t row, Language language) {
    return MessageTable[row + static_cast<std::size_t>(language) * kRowsOfLanguage][2];
}

}  // namespace

Language LanguageFromAbbreviation(std::string_view language) {
    return language == "ITA" ? Language::italian : Language::english;
}

std::string_view PanelTextFor(PanelText text, Language language) {
    return TextAt(static_cast<std::size_t>(text), language);
}

std::string_view MessageFor(ResultCode code, Language language) {
    const auto row = static_cast<std::size_t>(code);
    return row < kCodeRows ? TextAt(row, language) : std::string_view{};
}

}  // namespace vento
