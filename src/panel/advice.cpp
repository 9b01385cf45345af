#include "panel/advice.h"

namespace vento {
namespace {

using platform::HidBackEnd;
using platform::OpenOutcome;

Sentence AdviseOnPermission(HidBackEnd backEnd) {
    switch (backEnd) {
        case HidBackEnd::hidraw:
            return Phrase{
                "Il trasmettitore è collegato, ma non hai il permesso di aprirlo. Copia il file "
                "60-vento.rules di VENTO in /etc/udev/rules.d, scollega il trasmettitore e ricollegalo. La "
                "regola dà accesso all'utente che siede a questo computer, non a chi vi accede da un altro.",
                "The transmitter is connected, but you are not allowed to open it. Copy VENTO's file "
                "60-vento.rules to /etc/udev/rules.d, unplug the transmitter and plug it in again. The rule "
                "gives access to the user who sits at this computer, not to one who is logged in from "
                "another."};
        case HidBackEnd::windows:
            return Phrase{
                "Il trasmettitore è collegato, ma Windows non ti permette di aprirlo. Chiedi a chi "
                "amministra questo computer di consentire l'accesso ai dispositivi HID, poi scollega il "
                "trasmettitore e ricollegalo.",
                "The transmitter is connected, but Windows does not let you open it. Ask whoever administers "
                "this computer to allow access to HID devices, then unplug the transmitter and plug it in "
                "again."};
        case HidBackEnd::webHid:
            return Phrase{
                "Il trasmettitore è collegato, ma il sistema non permette al browser di aprirlo. Su Linux "
                "serve la regola udev di VENTO, che questa pagina offre; un browser installato con Snap o "
                "Flatpak ha bisogno anche del permesso di usare i dispositivi HID. Poi scollega il "
                "trasmettitore e ricollegalo.",
                "The transmitter is connected, but the system does not let the browser open it. On Linux "
                "that takes VENTO's udev rule, which this page offers; a browser installed by Snap or "
                "Flatpak also needs the permission to use HID devices. Then unplug the transmitter and plug "
                "it in again."};
        case HidBackEnd::simulation:
            return Phrase{
                "Lo scenario della simulazione vieta di aprire il trasmettitore: \"opens\" vale false oppure "
                "un guasto \"refused\" copre questa ricerca.",
                "The scenario of the simulation does not let the transmitter be opened: its \"opens\" is "
                "false, or a fault \"refused\" covers this search."};
    }
    return {};
}

// What is to be said of a column beside "written and verified", without its name.
Sentence Complaint(const ColumnOutcome& column) {
    Sentence text;
    const bool unproved = column.selected && !column.verified;
    if (column.overwrittenBy) {
        text += Fill({"sovrascritta dalla lista di {0}, che è troppo lunga per la sua parte di memoria",
                      "overwritten by the list of {0}, which is too long for its part of the memory"},
                     {kSections[*column.overwrittenBy].name});
        text += unproved ? "; " : ".";
    }
    if (unproved) {
        text += column.written
                    ? Sentence(Phrase{"scritta, ma non verificata: ", "written, but not verified: "})
                    : Sentence(Phrase{"non scritta: ", "not written: "});
        text += column.problem.Empty()
                    ? Sentence(Phrase{"il programma si è fermato prima.", "the run ended before it."})
                    : column.problem;
    }
    return text;
}

}  // namespace

Sentence AdviseOn(OpenOutcome outcome, HidBackEnd backEnd) {
    switch (outcome) {
        case OpenOutcome::forbidden:
            return AdviseOnPermission(backEnd);
        case OpenOutcome::busy:
            return Phrase{
                "Il trasmettitore è collegato, ma un altro programma lo tiene per sé. Chiudi quel programma "
                "e riprova.",
                "The transmitter is connected, but another program keeps it to itself. Close that program "
                "and try again."};
        case OpenOutcome::held:
            return Phrase{
                "Il trasmettitore è collegato, ma un altro VENTO lo sta usando. Aspetta che abbia finito e "
                "riprova.",
                "The transmitter is connected, but another VENTO is using it. Wait until that one has "
                "finished and try again."};
        case OpenOutcome::noBandwidth:
            return Phrase{
                "Il trasmettitore è collegato, ma la porta USB non ha più banda. Collegalo a un'altra porta.",
                "The transmitter is connected, but there is no USB bandwidth left. Use another port."};
        case OpenOutcome::failed:
            return Phrase{
                "Il trasmettitore è collegato, ma non è stato possibile aprirlo. Scollegalo, ricollegalo e "
                "riprova.",
                "The transmitter is connected, but it could not be opened. Unplug it, plug it in again and "
                "try once more."};
        case OpenOutcome::opened:
        case OpenOutcome::foreign:
            break;
    }
    return {};
}

Sentence DescribeColumnOutcome(const ColumnOutcome& column) {
    if (Sentence complaint = Complaint(column); !complaint.Empty()) return complaint;
    return column.selected ? Phrase{"scritta e verificata", "written and verified"}
                           : Phrase{"non selezionata", "not selected"};
}

Sentence DescribeVerification(const ColumnOutcome& column) {
    if (!column.selected) return Phrase{"non selezionata", "not selected"};
    if (column.verified) return Phrase{"è nel telecomando", "is in the remote"};
    return Fill({"non è nel telecomando: {0}", "is not in the remote: {0}"},
                {column.problem.Empty() ? Sentence(Phrase{"la verifica si è fermata prima.",
                                                          "the verification ended before it."})
                                        : column.problem});
}

Sentence DescribeColumn(const ProgrammingOutcome& outcome, std::size_t column) {
    return Labelled(kSections.at(column).name, DescribeColumnOutcome(outcome.columns.at(column)));
}

Sentence DescribeLosses(const ProgrammingOutcome& outcome) {
    if (!outcome.Incomplete()) return {};
    Sentence text;
    const auto addLine = [&text](const Sentence& line) {
        if (!text.Empty()) text += "\n";
        text += line;
    };
    for (std::size_t c = 0; c < kColumns; ++c) {
        if (outcome.columns[c].Lost()) addLine(DescribeColumn(outcome, c));
    }
    if (!outcome.closed) {
        addLine(Phrase{"Il telecomando non ha confermato la fine della programmazione.",
                       "The remote did not acknowledge the end of programming."});
    }
    return text;
}

}  // namespace vento
