#include <gtest/gtest.h>

#include <tuple>

#include "chain/bench.h"
#include "panel/advice.h"
#include "panel/message_table.h"
#include "protocol/code_lists.h"
#include "protocol/transmitter_kinds.h"
#include "protocol/wait_for_remote.h"

namespace vento::test {
namespace {

// Cycles of a run with the remote in place: 1 handler's search, 2 operation's search, 3 timing, 4 to 13
// polls. A section of two blocks takes 2 flag frames, 2 times 3 block frames, 2 verify frames.
constexpr std::uint32_t kWait = 4;
constexpr std::uint32_t kAfterWait = 14;
constexpr std::uint32_t kSection = kAfterWait + 3;
constexpr std::uint32_t kBlock = kSection + 4;
constexpr std::uint32_t kPerSection = 10;
constexpr std::uint32_t kClosing = kSection + 3 * kPerSection;
constexpr std::uint32_t kActivate = kClosing + 2;
constexpr std::uint32_t kAgain = kActivate + 3 + 10;  // when the third frame of the activation has failed

Fault At(std::uint32_t cycle, const FaultKind& kind) {
    return {cycle, cycle, kind};
}

// Gives back what the outcome has to say, as a line, if it is anything.
std::string ExpectRun(Workbench& bench, bool read, int code, const std::string& name) {
    read ? bench.form.Command2_Click() : bench.form.Command6_Click(0);
    EXPECT_EQ(bench.Code(), code) << name;
    EXPECT_EQ(bench.form.Label1.Caption(), MessageFor(ResultCode(code), bench.form.PanelLanguage())) << name;
    EXPECT_EQ(bench.form.Text1.Text(), std::to_string(code)) << name;
    EXPECT_FALSE(bench.form.ProgressBar1.Visible()) << name;
    EXPECT_TRUE(bench.form.Command6(0).Enabled()) << name;
    const std::string diagnostic = bench.form.LatestOutcome()->diagnostic.In(Language::english);
    return diagnostic.empty() ? "" : name + ": " + diagnostic + "\n";
}

TEST(Failure, EachStepHasItsCode) {
    struct Case {
        const char* name;
        std::vector<Fault> faults;
        int code;
        std::uint8_t closing = 0;  // value of the last flag frame, where it matters
        bool read = false;
    };
    const fault::Unplugged gone;
    const fault::ReadFails lost;
    const fault::Status refused{1};
    const fault::Flip wrong{1, 64};
    constexpr std::uint32_t kLast = kSection + 2 * kPerSection;  // announcement of the last section
    constexpr std::uint32_t kCodes = kAfterWait + 4 + 10;        // second conversation of a read
    const std::vector<Case> cases{
        {"gone at the second look", {At(2, gone)}, 2},
        {"refused at the second look", {At(2, fault::Refused{})}, 2},
        {"gone before the timing", {At(3, gone)}, 9},
        {"timing lost on the way", {At(3, fault::WriteFails{})}, 0},
        {"gone during the wait", {{kWait, 30000, gone}}, 3},
        {"version refused", {At(kAfterWait, refused)}, 12},
        {"version not asked for", {At(kAfterWait, fault::WriteFails{})}, 12},
        {"version with another echo", {At(kAfterWait, wrong)}, 12},
        {"count refused", {At(kAfterWait + 1, refused)}, 6},
        {"table lost", {At(kAfterWait + 2, lost)}, 5},
        {"an announcement refused, its section written", {At(kSection + 1, refused)}, 0, 240},
        {"a transfer refused", {At(kSection + 2, refused)}, 0, 224},
        {"a block's checksum wrong", {At(kBlock, wrong)}, 0, 224},
        {"every transfer fails", {At(kBlock, wrong), At(kBlock + 5, wrong), At(kBlock + 10, wrong)}, 0, 128},
        {"the last announcement and its transfer refused", {{kLast, kLast + 1, refused}}, 3},
        {"its value and its transfer refused", {{kLast + 1, kLast + 2, refused}}, 3},
        {"verification not opened", {At(kSection + 8, refused)}, 18},
        {"verification's checksum wrong", {At(kSection + 9, wrong)}, 18},
        {"closing flags lost", {At(kClosing, lost)}, 0},
        {"first activation refused, second good", {At(kActivate + 2, refused)}, 0},
        {"activation refused twice", {At(kActivate + 2, refused), At(kAgain, lost)}, 19},
        {"activation with another echo", {At(kActivate + 2, wrong), At(kAgain, wrong)}, 19},
        {"its echo with a bit of the remote's own",
         {At(kActivate + 2, fault::Flip{1, 4}), At(kAgain, lost)},
         0},
        {"its state not asked for", {At(kActivate, fault::WriteFails{}), At(kActivate + 1 + 10, wrong)}, 19},
        {"not released at last", {At(kActivate + 2, refused), At(kAgain + 3, refused)}, 11},
        {"read: version", {At(kAfterWait, refused)}, 12, 0, true},
        {"read: flags", {At(kAfterWait + 2, refused)}, 21, 0, true},
        {"read: flags not asked for", {At(kAfterWait + 1, wrong)}, 21, 0, true},
        {"read: not seen a second time", {{kAfterWait + 4, 40000, refused}}, 3, 0, true},
        {"read: count", {At(kCodes, refused)}, 6, 0, true},
        {"read: table", {At(kCodes + 1, refused)}, 5, 0, true},
        {"read: release", {At(kCodes + 13, refused)}, 11, 0, true},
    };
    std::string said = "\n";
    for (const Case& c : cases) {
        Workbench bench(With(c.faults), Programme(7, 33));
        said += ExpectRun(bench, c.read, c.code, c.name);
        if (c.closing == 224 || c.code == 2)
            said += bench.form.LatestOutcome()->diagnostic.In(Language::italian) + "\n";
        if (c.closing == 0) continue;
        EXPECT_EQ(std::ranges::count(bench.host.frames, CommandFrame(c.closing, 2)), 1) << c.name;
    }
    EXPECT_EQ(said, R"(
gone at the second look: No transmitter was found.
Non è stato trovato alcun trasmettitore.
refused at the second look: The scenario of the simulation does not let the transmitter be opened: its "opens" is false, or a fault "refused" covers this search.
Lo scenario della simulazione vieta di aprire il trasmettitore: "opens" vale false oppure un guasto "refused" copre questa ricerca.
gone before the timing: The transmitter was gone before it could take the link timing.
gone during the wait: No remote answered 10 polls in a row; at the last poll no transmitter was found.
version refused: The remote's version could not be read: the reply had status 1 and first byte 6.
version not asked for: The remote's version could not be read: the transmitter did not take the report.
version with another echo: The remote's version could not be read: the reply had status 0 and first byte 70.
count refused: The section count could not be read: the reply had status 1 and first byte 4.
table lost: The section offsets could not be read: no reply came.
a transfer refused: TV: not written: Block 1: The remote refused another block: the reply had status 1 and first byte 1.
TV: non scritta: Blocco 1: Il telecomando non ha accettato un nuovo blocco: la risposta aveva stato 1 e primo byte 1.
a block's checksum wrong: TV: not written: Block 1: checksum 108 was expected, but the reply had status 0 and first byte 44.
TV: non scritta: Blocco 1: il telecomando doveva rispondere con la somma di controllo 108, ma la risposta aveva stato 0 e primo byte 44.
every transfer fails: TV: not written: Block 1: checksum 108 was expected, but the reply had status 0 and first byte 44.
DTT: not written: Block 1: checksum 28 was expected, but the reply had status 0 and first byte 92.
SAT: not written: Block 1: checksum 204 was expected, but the reply had status 0 and first byte 140.
the last announcement and its transfer refused: The remote did not acknowledge its section flags: the reply had status 1 and first byte 7.
its value and its transfer refused: The remote did not acknowledge its section flags: the reply had status 1 and first byte 72.
verification not opened: TV: Verification failed: The remote refused to be verified: the reply had status 1 and first byte 2.
verification's checksum wrong: TV: Verification failed: checksum 245 was expected, but the reply had status 0 and first byte 181.
closing flags lost: The remote did not acknowledge the end of programming.
activation refused twice: The first section could not be activated: no reply came.
activation with another echo: The first section could not be activated: the reply had status 0 and first byte 72.
its state not asked for: The first section could not be activated: the reply had status 0 and first byte 72.
not released at last: The remote did not acknowledge the end of the conversation: the reply had status 1 and first byte 0.
read: version: The remote's version could not be read: the reply had status 1 and first byte 6.
read: flags: The section flags could not be read: the reply had status 1 and first byte 5.
read: flags not asked for: The section flags could not be read: the reply had status 0 and first byte 72.
read: not seen a second time: No remote answered 10 polls in a row; at the last poll the reply had status 1 and first byte 165.
read: count: The section count could not be read: the reply had status 1 and first byte 4.
read: table: The section offsets could not be read: the reply had status 1 and first byte 5.
read: release: The remote did not acknowledge the end of the conversation: the reply had status 1 and first byte 0.
)");
}

TEST(CodeLists, PiecesAreNumbersFrom0To255) {
    EXPECT_EQ(ParseCodeList(" 7 , 0000000042,0,255").bytes, (Bytes{7, 42, 0, 255}));
    for (const std::string bad : {"", "1 2", "256", "4,-1", "1,2x", "1,,2", "1,255,"}) {
        const ParsedCodeList list = ParseCodeList(bad);
        EXPECT_EQ(list.bad ? list.bad->place : 0, list.bytes.size() + 1) << bad;
    }
}

TEST(Failure, DataThatCannotBeWorkedWithStopItBeforeAnyHarm) {
    const std::string one = Line(1, "L", "1");
    const std::string two = Line(2, "L", "1");
    const std::string tooLong = one + Line(1, "L", ListOf(16384, 0)) + two + Line(2, "L", ListOf(16384, 0));
    // And how many frames, polls too, there are.
    const std::vector<std::tuple<const char*, std::string, std::vector<std::uint16_t>, int, std::size_t>>
        cases{
            {"no label", Line(1, " ", "1") + Line(1, " ", "1"), {1}, 10, 12},
            {"no list B", one, {1}, 10, 12},
            {"bad piece in list B", one + Line(1, "L", "1,,2"), {1}, 15, 1},
            {"bad piece in the list that is not wanted", Line(1, "L", "256") + one, {1}, 15, 1},
            {"one column without its list", two + two + one, {1, 2}, 15, 12},
            {"too many bytes", tooLong, {1, 20000}, 15, 12},
            {"no sections", one + one, {}, 15, 13},
            {"a section at the end of the memory", Programme(7, 33), {0, 100, 65503}, 0, 49},
            {"a section beyond the end of the memory", Programme(7, 33), {0, 100, 65504}, 15, 14},
        };
    std::string said = "\n";
    for (const auto& [name, programme, sections, code, frames] : cases) {
        Workbench bench(With({}, sections), programme);
        said += ExpectRun(bench, false, code, name);
        const Sentence& diagnostic = bench.form.LatestOutcome()->diagnostic;
        if (!diagnostic.Empty()) said += diagnostic.In(Language::italian) + "\n";
        EXPECT_EQ(bench.host.frames.size(), frames) << name;
    }
    EXPECT_EQ(said, R"(
no label: No column with a label has a list B, which this remote takes.
Nessuna colonna con un'etichetta ha una lista B, che questo telecomando richiede.
no list B: No column with a label has a list B, which this remote takes.
Nessuna colonna con un'etichetta ha una lista B, che questo telecomando richiede.
bad piece in list B: List B of column TV, value 2: "" is not a number from 0 to 255. Correct the file and open it again.
Lista B della colonna TV, valore 2: "" non è un numero da 0 a 255. Correggere il file e riaprirlo.
bad piece in the list that is not wanted: List A of column TV, value 1: "256" is not a number from 0 to 255. Correct the file and open it again.
Lista A della colonna TV, valore 1: "256" non è un numero da 0 a 255. Correggere il file e riaprirlo.
one column without its list: Column TV has a label but no list for this remote, and others have. Complete the file and open it again.
La colonna TV ha un'etichetta ma nessuna lista per questo telecomando, mentre altre l'hanno. Completare il file e riaprirlo.
too many bytes: The selected lists together have 32768 bytes; 32767 is the most that can be sent.
Le liste hanno in tutto 32768 valori; se ne possono trasmettere al massimo 32767.
no sections: The remote says that it has 0 sections; 1 to 3 were expected.
Il telecomando dichiara 0 sezioni; ne può avere da 1 a 3.
a section beyond the end of the memory: The remote's memory has no room for the 33 bytes of column SAT.
La memoria del telecomando non basta per i 33 valori della colonna SAT.
)");
}

// With a list whose checksums come to 0, of its block (197) or its section (202), the zeros that stand for a
// reply of a missing transmitter must not pass for them.
TEST(Failure, ALostReplyIsNoChecksumOfZero) {
    for (const auto& [byte, cycle, code] : {std::tuple{"197", 21U, 0}, {"202", 23U, 18}}) {
        Workbench bench(With({At(cycle, fault::Unplugged{})}, {0}), Line(1, "L", "1") + Line(1, "L", byte));
        EXPECT_NE(ExpectRun(bench, false, code, byte), "");
    }
}

// Poll by poll, with a yield behind each and one before them.
TEST(Wait, CountsTriesOfTenPollsAndGivesUpAfterThreeMinutesOfSilence) {
    constexpr std::uint32_t kEver = 99999;
    const fault::Status refused{1};
    struct Case {
        const char* name;
        std::uint16_t vendorId;
        Fault fault;
        std::size_t polls;
        int code;
        int secondsPerYield = 0;
    };
    const std::vector<Case> cases{
        {"a broken run", 1240, At(kWait + 9, refused), 20, 0},
        {"tenth good poll in the last try", 11025, {kWait, kWait + 9998, refused}, 10009, 0},
        {"never there, first kind", 1240, {kWait, kEver, refused}, 20000, 3},
        {"never there, second kind", 11025, {kWait, kEver, refused}, 10000, 3},
        {"silent", 11025, {kWait, kEver, fault::ReadFails{}}, 180, 3, 1},
        {"silent behind the first poll", 11025, {kWait + 1, kEver, fault::ReadFails{}}, 182, 3, 1},
        {"not silent, however long it takes", 11025, {kWait, kEver, refused}, 10000, 3, 1}};
    for (const Case& c : cases) {
        Scenario scenario = With({c.fault});
        scenario.interfaces = {{c.vendorId, 1, true}};
        Workbench bench(scenario, Programme(1, 1));
        int yieldsInWait = 0;
        bench.desktop.onYield = [&](int) {
            yieldsInWait += bench.form.Command6(3).Enabled() ? 1 : 0;
            bench.clock.now += std::chrono::seconds(c.secondsPerYield);
        };
        EXPECT_EQ(ExpectRun(bench, false, c.code, c.name).empty(), c.code == 0);
        const auto isPoll = [](const Bytes& frame) { return frame.size() == 7 && frame[5] == 165; };
        EXPECT_EQ(std::ranges::count_if(bench.host.frames, isPoll), c.polls) << c.name;
        EXPECT_EQ(yieldsInWait, c.polls + (c.code == 0 ? 2 : 1)) << c.name;
    }
    Workbench bench(With({{1, kEver, refused}}));
    FormWeb& form = bench.form;
    Link link(bench.host, IsTransmitter);
    link.linkFactor = 0;
    const auto yield = [] {};
    EXPECT_TRUE(
        WaitForRemote({form.Label1, form.Command6(3), form.ProgressBar1, "", bench.clock, yield}, link)
            .Failed());
    EXPECT_EQ(bench.host.cycles, 200) << "a transmitter without a LinkFactor";
}

TEST(Wait, TakesTwoHundredRefusalsInARowAndNothingElseForTheRemotesAbsence) {
    constexpr std::uint32_t kGone = kWait + 200;
    const fault::Status refused{1};
    const fault::Unplugged noTransmitter;
    Workbench bench(
        With({{kWait, kWait + 98, refused},  // an answer behind it, and no reply at all behind the next
              {kWait + 100, kWait + 148, refused},
              At(kWait + 149, fault::ReadFails{}),
              {kWait + 150, kGone - 1, refused},
              {kGone, kGone + 29, noTransmitter},
              {kGone + 30, 99999, refused}}));
    platform::Clock::Duration lookedFor{};
    bench.desktop.onYield = [&](int) {
        if (bench.host.cycles == kGone - 1) lookedFor -= bench.clock.now;
        if (bench.host.cycles == kGone + 29) lookedFor += bench.clock.now;
    };
    bench.form.AwaitRemoval();
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.host.cycles, kGone + 29 + 200);
    EXPECT_EQ(lookedFor, std::chrono::seconds(3)) << "ten times a second";
}

// The first cycle behind the wait without a transmitter, then each of the rest refused; in Italian, whose
// texts are those of the other operations too.
TEST(Failure, AVerificationTellsAtWhichStepItHasFailed) {
    std::string said = "\n";
    const auto verify = [&said](std::vector<Fault> faults) {
        Workbench bench(With(std::move(faults)), Programme(3, 33));
        bench.form.Command6_Click(0);
        const auto before = static_cast<std::uint32_t>(bench.host.cycles);
        bench.form.Verify();
        const Sentence& diagnostic = bench.form.LatestOutcome()->diagnostic;
        if (!diagnostic.Empty())
            said += std::to_string(bench.Code()) + " " + diagnostic.In(Language::italian) + "\n";
        return std::pair(before, static_cast<std::uint32_t>(bench.host.cycles));
    };
    const auto [before, end] = verify({});
    for (const FaultKind& kind :
         std::vector<FaultKind>{fault::Unplugged{}, fault::WriteFails{}, fault::ReadFails{}})
        verify({At(before + kAfterWait, kind)});
    for (std::uint32_t cycle = before + kAfterWait; cycle <= end; ++cycle)
        verify({At(cycle, fault::Status{1})});
    EXPECT_EQ(said, R"(
12 Impossibile leggere la versione del telecomando: nessun trasmettitore trovato.
12 Impossibile leggere la versione del telecomando: il trasmettitore non ha accettato i dati.
12 Impossibile leggere la versione del telecomando: nessuna risposta.
12 Impossibile leggere la versione del telecomando: la risposta aveva stato 1 e primo byte 6.
6 Impossibile leggere il numero delle sezioni: la risposta aveva stato 1 e primo byte 4.
5 Impossibile leggere le posizioni delle sezioni: la risposta aveva stato 1 e primo byte 5.
21 Impossibile leggere lo stato delle sezioni: la risposta aveva stato 1 e primo byte 8.
21 Impossibile leggere lo stato delle sezioni: la risposta aveva stato 1 e primo byte 5.
18 TV: Verifica non riuscita: Il telecomando ha rifiutato la verifica: la risposta aveva stato 1 e primo byte 2.
18 TV: Verifica non riuscita: il telecomando doveva rispondere con la somma di controllo 245, ma la risposta aveva stato 1 e primo byte 245.
18 TV: Impossibile leggere il nome di una sezione: la risposta aveva stato 1 e primo byte 8.
18 TV: Impossibile leggere il nome di una sezione: la risposta aveva stato 1 e primo byte 1.
18 DTT: Verifica non riuscita: Il telecomando ha rifiutato la verifica: la risposta aveva stato 1 e primo byte 2.
18 DTT: Verifica non riuscita: il telecomando doveva rispondere con la somma di controllo 171, ma la risposta aveva stato 1 e primo byte 171.
18 DTT: Impossibile leggere il nome di una sezione: la risposta aveva stato 1 e primo byte 8.
18 DTT: Impossibile leggere il nome di una sezione: la risposta aveva stato 1 e primo byte 1.
11 Il telecomando non ha confermato la fine della comunicazione: la risposta aveva stato 1 e primo byte 0.
)");
}

// Every kind of fault in every cycle of a run of three columns.
TEST(Failure, NeverHangsAndTheNextRunIsGood) {
    const std::vector<FaultKind> kinds{fault::Unplugged{},   fault::Refused{},     fault::WriteFails{1},
                                       fault::WriteFails{2}, fault::ReadFails{},   fault::Status{1},
                                       fault::Reply{},       fault::Flip{1, 0x80}, fault::Flip{0, 1},
                                       fault::Flip{2, 0xFF}};
    constexpr std::size_t kRefused = 1;
    const std::string refusal =
        AdviseOn(platform::OpenOutcome::forbidden, platform::HidBackEnd::simulation).In(Language::english);
    const WordRuns whole{{256, WordsOf(33, 101)}, {4352, WordsOf(33, 111)}, {8448, WordsOf(33, 121)}};
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        for (std::uint32_t cycle = 1; cycle <= kActivate + 2; ++cycle) {
            SCOPED_TRACE("fault " + std::to_string(kind) + " in cycle " + std::to_string(cycle));
            Workbench bench(With({At(cycle, kinds[kind])}), Programme(7, 33));
            bench.form.Command6_Click(0);
            const auto& outcome = bench.form.LatestOutcome();
            std::vector<std::string> told;
            if (!outcome)
                told = {kind == kRefused ? "Transmitter not connected\n" + refusal
                                         : "Transmitter not connected"};
            if (bench.Code() == 0 && outcome->programming.Incomplete()) {
                const Sentence losses = DescribeLosses(outcome->programming);
                told = {"The remote is not complete. Program again.\n" + losses.In(Language::english)};
            }
            EXPECT_EQ(bench.desktop.messages, told);
            EXPECT_FALSE(bench.form.ProgressBar1.Visible());
            EXPECT_FALSE(bench.form.Command6(3).Enabled());
            EXPECT_EQ(ExpectRun(bench, false, 0, "the next run"), "");
            WordRuns memory = bench.Memory();
            for (const auto& [offset, words] : whole)
                EXPECT_EQ(memory[offset], words);
        }
    }
}

}  // namespace
}  // namespace vento::test
