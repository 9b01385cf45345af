#include "panel/advice.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace vento {
namespace {

std::string InBoth(const Sentence& sentence) {
    return sentence.In(Language::italian) + "\n" + sentence.In(Language::english) + "\n";
}

// Literal, since nobody would miss a half of one before an operator needs it.
TEST(Advice, SaysWhatHelpsWithATransmitterThatCannotBeOpened) {
    using enum platform::HidBackEnd;
    using enum platform::OpenOutcome;
    std::string said = "\n";
    for (const auto backEnd : {hidraw, windows, webHid, simulation})
        said += InBoth(AdviseOn(forbidden, backEnd));
    for (const auto outcome : {busy, held, noBandwidth, failed})
        said += InBoth(AdviseOn(outcome, hidraw));
    EXPECT_EQ(said, R"(
Il trasmettitore è collegato, ma non hai il permesso di aprirlo. Copia il file 60-vento.rules di VENTO in /etc/udev/rules.d, scollega il trasmettitore e ricollegalo. La regola dà accesso all'utente che siede a questo computer, non a chi vi accede da un altro.
The transmitter is connected, but you are not allowed to open it. Copy VENTO's file 60-vento.rules to /etc/udev/rules.d, unplug the transmitter and plug it in again. The rule gives access to the user who sits at this computer, not to one who is logged in from another.
Il trasmettitore è collegato, ma Windows non ti permette di aprirlo. Chiedi a chi amministra questo computer di consentire l'accesso ai dispositivi HID, poi scollega il trasmettitore e ricollegalo.
The transmitter is connected, but Windows does not let you open it. Ask whoever administers this computer to allow access to HID devices, then unplug the transmitter and plug it in again.
Il trasmettitore è collegato, ma il sistema non permette al browser di aprirlo. Su Linux serve la regola udev di VENTO, che questa pagina offre; un browser installato con Snap o Flatpak ha bisogno anche del permesso di usare i dispositivi HID. Poi scollega il trasmettitore e ricollegalo.
The transmitter is connected, but the system does not let the browser open it. On Linux that takes VENTO's udev rule, which this page offers; a browser installed by Snap or Flatpak also needs the permission to use HID devices. Then unplug the transmitter and plug it in again.
Lo scenario della simulazione vieta di aprire il trasmettitore: "opens" vale false oppure un guasto "refused" copre questa ricerca.
The scenario of the simulation does not let the transmitter be opened: its "opens" is false, or a fault "refused" covers this search.
Il trasmettitore è collegato, ma un altro programma lo tiene per sé. Chiudi quel programma e riprova.
The transmitter is connected, but another program keeps it to itself. Close that program and try again.
Il trasmettitore è collegato, ma un altro VENTO lo sta usando. Aspetta che abbia finito e riprova.
The transmitter is connected, but another VENTO is using it. Wait until that one has finished and try again.
Il trasmettitore è collegato, ma la porta USB non ha più banda. Collegalo a un'altra porta.
The transmitter is connected, but there is no USB bandwidth left. Use another port.
Il trasmettitore è collegato, ma non è stato possibile aprirlo. Scollegalo, ricollegalo e riprova.
The transmitter is connected, but it could not be opened. Unplug it, plug it in again and try once more.
)");
    EXPECT_TRUE(AdviseOn(opened, hidraw).Empty() && AdviseOn(foreign, hidraw).Empty());
}

TEST(Advice, TellsOfEachColumnWhatHasBecomeOfIt) {
    const Sentence none, problem = Phrase{"Problema.", "Problem."};
    // Whether it is selected, written, verified, and what is wrong with it; the last two are overwritten by
    // DTT's list.
    const std::vector<std::tuple<bool, bool, bool, Sentence>> cases{
        {false, false, false, none},   {true, true, true, none}, {true, true, false, none},
        {true, false, false, problem}, {true, true, true, none}, {true, false, false, none}};
    std::vector<ColumnOutcome> columns;
    std::string said = "\n";
    for (const auto& [selected, written, verified, wrong] : cases) {
        ColumnOutcome& column = columns.emplace_back();
        std::tie(column.selected, column.written, column.verified, column.problem) =
            std::tie(selected, written, verified, wrong);
        if (columns.size() > 4) column.overwrittenBy = 1;
        said += InBoth(DescribeColumnOutcome(column)) + InBoth(DescribeVerification(column));
    }
    ProgrammingOutcome outcome;
    EXPECT_TRUE(DescribeLosses(outcome).Empty()) << "nothing is selected";
    outcome.columns = {columns[4], columns[0], columns[3]};
    said += InBoth(kIncompleteProgramming) + InBoth(DescribeLosses(outcome));
    EXPECT_EQ(said, R"(
non selezionata
not selected
non selezionata
not selected
scritta e verificata
written and verified
è nel telecomando
is in the remote
scritta, ma non verificata: il programma si è fermato prima.
written, but not verified: the run ended before it.
non è nel telecomando: la verifica si è fermata prima.
is not in the remote: the verification ended before it.
non scritta: Problema.
not written: Problem.
non è nel telecomando: Problema.
is not in the remote: Problem.
sovrascritta dalla lista di DTT, che è troppo lunga per la sua parte di memoria.
overwritten by the list of DTT, which is too long for its part of the memory.
è nel telecomando
is in the remote
sovrascritta dalla lista di DTT, che è troppo lunga per la sua parte di memoria; non scritta: il programma si è fermato prima.
overwritten by the list of DTT, which is too long for its part of the memory; not written: the run ended before it.
non è nel telecomando: la verifica si è fermata prima.
is not in the remote: the verification ended before it.
Il telecomando non è completo. Ripetere la programmazione.
The remote is not complete. Program again.
TV: sovrascritta dalla lista di DTT, che è troppo lunga per la sua parte di memoria.
SAT: non scritta: Problema.
Il telecomando non ha confermato la fine della programmazione.
TV: overwritten by the list of DTT, which is too long for its part of the memory.
SAT: not written: Problem.
The remote did not acknowledge the end of programming.
)");
    outcome.columns = {columns[1]};
    outcome.closed = true;
    EXPECT_TRUE(DescribeLosses(outcome).Empty());
}

}  // namespace
}  // namespace vento
