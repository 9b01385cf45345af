#include "panel/load_message.h"

namespace vento {
namespace {

std::string Place(const LoadProblem& problem, bool italian) {
    if (problem.line == 0) return {};
    const std::string line = std::to_string(problem.line);
    const std::string field = std::to_string(problem.field);
    return italian ? "Riga " + line + ", campo " + field + ": " : "Line " + line + ", field " + field + ": ";
}

}  // namespace

std::string DescribeLoadProblem(const LoadProblem& problem, Language language) {
    return Place(problem, language == Language::italian) + DescribeLoadReason(problem, language);
}

std::string DescribeLoadReason(const LoadProblem& problem, Language language) {
    const bool italian = language == Language::italian;
    switch (problem.reason) {
        case LoadProblem::Reason::cannotOpen:
            return (italian ? "Impossibile aprire il file: " : "The file could not be opened: ") +
                   problem.systemReason;
        case LoadProblem::Reason::tooLarge:
            return italian ? "Il file è troppo grande per essere un file di programmazione."
                           : "The file is too large to be a programme file.";
        case LoadProblem::Reason::empty:
            return italian ? "Il file è vuoto." : "The file is empty.";
        case LoadProblem::Reason::tooManyLines:
            return italian ? "Il file ha più di 32767 righe." : "The file has more than 32767 lines.";
        case LoadProblem::Reason::missingField:
            return italian ? "manca. Ogni riga deve avere almeno 5 campi separati da punto e virgola."
                           : "missing. Each line needs at least 5 fields separated by semicolons.";
        case LoadProblem::Reason::badColumn:
            return italian ? "il numero della colonna deve essere 1, 2 o 3."
                           : "the column number has to be 1, 2 or 3.";
    }
    return {};
}

}  // namespace vento
