#include "console/codec_errors.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace vento::console {
namespace {

// The numbers of a sentence of the library stand where its English pattern has {0}, {1} and {2}.
constexpr std::array kSentences{
    Phrase{"Il file di partenza non esiste", "Source file does not exist"},
    Phrase{"I dati non sono stati compressi con HE3 o sono corrotti (identificazione non trovata)",
           "The data either was not compressed with HE3 or is corrupt (identification string not found)"},
    Phrase{"I dati potrebbero essere corrotti (la somma di controllo non è quella attesa)",
           "The data might be corrupted (checksum did not match expected value)"},
    Phrase{"Il contenitore finisce alla posizione {0}, prima della somma di controllo",
           "The container ends at offset {0}, within its checksum"},
    Phrase{"Il contenitore finisce alla posizione {0}, a metà della lunghezza dei dati di partenza",
           "The container ends at offset {0}, within its source length"},
    Phrase{"Il contenitore finisce alla posizione {0}, a metà del numero delle coppie",
           "The container ends at offset {0}, within its table count"},
    Phrase{"Il contenitore finisce alla posizione {0}, a metà del blocco della chiave",
           "The container ends at offset {0}, within its key block"},
    Phrase{"Il contenitore finisce alla posizione {0}, a metà della tabella dei simboli",
           "The container ends at offset {0}, within its symbol table"},
    Phrase{"Il contenitore finisce alla posizione {0}, a metà dei codici",
           "The container ends at offset {0}, within its code area"},
    Phrase{"I dati sono lunghi {0} byte, e ne servono almeno 4",
           "The data are {0} bytes long, and need 4 at least"},
    Phrase{"I dati sono lunghi {0} byte, e 2147483647 è il massimo",
           "The data are {0} bytes long, and 2147483647 is the most"},
    Phrase{"Il file è lungo {0} byte, e 2147483647 è il massimo",
           "The file is {0} bytes long, and 2147483647 is the most"},
    Phrase{"Ci sono più di 2147483647 byte", "There are more than 2147483647 bytes"},
    Phrase{"I dati codificati sarebbero lunghi {0} bit, e 2147483647 è il massimo",
           "The coded data would be {0} bits long, and 2147483647 is the most"},
    Phrase{"Il contenitore sarebbe più lungo di 2147483647 byte",
           "The container would be longer than 2147483647 bytes"},
    Phrase{"La lunghezza dei dati di partenza è negativa: {0}", "The source length is negative: {0}"},
    Phrase{"I codici richiedono un albero di più di 512 nodi (al simbolo {0})",
           "The codes need a tree of more than 512 nodes (at symbol {0})"},
    Phrase{"I dati non corrispondono al loro codice, al bit {0} della posizione {1}",
           "The data do not fit their code, at bit {0} of offset {1}"},
    Phrase{"I dati di partenza sono cambiati durante la codifica",
           "The source has changed while it was encoded"},
    Phrase{"La chiave ha {0} righe, e ne servono almeno 12", "The key has {0} rows, and needs 12 at least"},
    Phrase{"La chiave ha {0} righe, e serve la riga {1}", "The key has {0} rows, and row {1} is needed"},
    Phrase{"La chiave non ha una riga per un simbolo (coppia {0} della tabella dei simboli)",
           "The key has no row for a symbol (pair {0} of the symbol table)"},
    Phrase{"Senza la chiave un simbolo non è un byte (coppia {0} della tabella dei simboli)",
           "Without its key a symbol is not a byte (pair {0} of the symbol table)"},
    Phrase{"Senza la chiave la lunghezza di un codice non è un byte (coppia {0} della tabella dei simboli)",
           "Without its key a code length is not a byte (pair {0} of the symbol table)"},
    Phrase{"Riga {0} della chiave: {1} più {2} non dà un byte",
           "Row {0} of the key: {1} added to {2} does not make a byte"},
    Phrase{"Con una chiave un contenitore ha posto per 244 simboli",
           "With a key a container holds at most 244 symbols"},
    Phrase{"Una chiave di {0} righe è troppo lunga per il numero delle coppie",
           "A key of {0} rows is too long for the table count"}};

using Numbers = std::array<std::string_view, 3>;

// What stands in `text` for the placeholders of `pattern`; nothing if it is another sentence.
std::optional<Numbers> NumbersIn(std::string_view text, std::string_view pattern) {
    constexpr std::size_t kPlaceholder = 3;
    Numbers numbers;
    for (std::string_view& number : numbers) {
        const auto before = pattern.find('{');
        if (before == std::string_view::npos) break;
        if (!text.starts_with(pattern.substr(0, before))) return std::nullopt;
        text.remove_prefix(before);
        pattern.remove_prefix(before + kPlaceholder);
        number = text.substr(0, text.find_first_not_of("-0123456789"));
        text.remove_prefix(number.size());
    }
    return text == pattern ? std::optional(numbers) : std::nullopt;
}

}  // namespace

Sentence DescribeCodecError(const std::exception& error) {
    for (const Phrase& each : kSentences) {
        if (const auto numbers = NumbersIn(error.what(), each.View(Language::english)))
            return Fill(each, {numbers->at(0), numbers->at(1), numbers->at(2)});
    }
    return error.what();
}

}  // namespace vento::console
