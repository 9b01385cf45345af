#include "panel/form_web.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <tuple>

#include "chain/bench.h"
#include "panel/message_table.h"

namespace vento::test {
namespace {

const std::string kProgramme = Line(1, "Alfa", "1,2,3") + Line(1, "Alfa", "4,5,6");
const WordRuns kWritten{{256, WordsOf(3, 4)}};

TEST(StartUp, TakesTheCommandLineAndTheLanguage) {
    constexpr const char* kItalian = "PROGRAMMA|APRI|Leggi Programmazione|CHIUDI";
    constexpr const char* kEnglish = "PROGRAM|OPEN|CODE READING|CLOSE";
    const std::vector<std::tuple<std::string, std::optional<std::string>, std::string, bool, std::string>>
        cases{{"", "ITA", "", false, kItalian},
              {"c\" d/p.q\"lb", "ita", "c d/p.qlb", true, kEnglish},
              {"\"c d/p.qlb\" \"c d/p.qlb\"", "DEU", "c d/p.qlb c d/p.qlb", false, kEnglish},
              {"c d/p.qlb", std::nullopt, "c d/p.qlb", true, kEnglish},
              {"12\" a.qlb", "ITA", "12\" a.qlb", true, kItalian}};  // as it stands
    for (const auto& [commandLine, language, path, loaded, captions] : cases) {
        SCOPED_TRACE(commandLine);
        Workbench bench;
        FormWeb form({bench.host, bench.desktop, bench.files, bench.clock, platform::HidBackEnd::simulation});
        bench.files.contents = {{"c d/p.qlb", kProgramme}, {"12\" a.qlb", kProgramme}};
        bench.desktop.language = language;
        path == commandLine ? form.Form_Load(path, CommandLineKind::path) : form.Form_Load(commandLine);
        EXPECT_EQ(form.Label2.Caption(), path);
        EXPECT_EQ(form.Command6(0).Visible(), loaded);
        EXPECT_EQ(form.Command6(0).Caption() + "|" + form.Command4.Caption() + "|" + form.Command2.Caption() +
                      "|" + form.Command3.Caption(),
                  captions);
        EXPECT_EQ(std::tuple(form.Place.left, form.Place.top, form.Place.width, form.Place.height),
                  std::tuple(14400 - 4635, 8100 - 3352, 9270, 6705));
        EXPECT_FALSE(form.ProgressBar1.Visible());
        EXPECT_TRUE(bench.desktop.messages.empty()) << "a bad command line is passed over in silence";
    }
}

TEST(WayOut, DeletesTheFileNamedLastAndEndsOnce) {
    Workbench bench({}, kProgramme);
    bench.files.contents["bad.qlb"] = "1;2\n";
    bench.form.DropFile("bad.qlb");
    bench.form.Command3_Click();
    bench.form.Form_Unload();
    EXPECT_EQ(bench.files.deleted, std::vector<std::string>{"bad.qlb"});
    EXPECT_EQ(bench.desktop.ends, 1);
    bench.form.Command6_Click(0);
    bench.form.Command2_Click();
    bench.form.DropFile("p.qlb");
    EXPECT_EQ(bench.host.cycles, 0);
}

TEST(Open, LoadsOrSaysWhyNot) {
    const std::string fields = "manca. Ogni riga deve avere almeno 5 campi separati da punto e virgola.";
    const std::string needed = "missing. Each line needs at least 5 fields separated by semicolons.";
    // The file, if there is one, and what is said in Italian and in English.
    const std::vector<std::tuple<std::optional<std::string>, std::string, std::string>> cases{
        {Line(2, "Beta", "1"), "", ""},
        {"1;a;1;;\n1\n", "Riga 2, campo 2: " + fields, "Line 2, field 2: " + needed},
        {"1;a;1;;\n4;b;1;;\n", "Riga 2, campo 1: il numero della colonna deve essere 1, 2 o 3.",
         "Line 2, field 1: the column number has to be 1, 2 or 3."},
        {"", "Il file \u00E8 vuoto.", "The file is empty."},
        {std::string((64UL << 20) + 1, '\n'),
         "Il file \u00E8 troppo grande per essere un file di programmazione.",
         "The file is too large to be a programme file."},
        {std::string(32768, '\n'), "Il file ha pi\u00F9 di 32767 righe.",
         "The file has more than 32767 lines."},
        {std::nullopt, "Impossibile aprire il file: Il file o la cartella non esiste",
         "The file could not be opened: No such file or directory"},
    };
    for (const auto& [content, italian, english] : cases) {
        for (const bool isItalian : {true, false}) {
            Workbench bench({}, kProgramme);
            bench.form.Language = isItalian ? "ITA" : "ENG";
            if (content) bench.files.contents["f.qlb"] = *content;
            bench.desktop.choices = {"f.qlb", std::nullopt, ""};
            for (int i = 0; i < 3; ++i)
                bench.form.Command4_Click();
            EXPECT_EQ(bench.desktop.dialog, "Seleziona il file da aprire|File VENTO (*.qlb)|VENTO*.qlb|");
            EXPECT_EQ(bench.desktop.messages.size(), italian.empty() ? 0U : 1U);
            bench.desktop.messages.resize(1);
            const std::string& said = isItalian ? italian : english;
            EXPECT_EQ(bench.desktop.messages[0], said.empty() ? "" : said + "\nf.qlb");
        }
    }
}

// What the operator sees, as the controls tell it; other clicks meanwhile do nothing.
TEST(Operation, ShowsItsCourse) {
    Workbench bench({}, kProgramme);
    FormWeb& form = bench.form;
    form.Language = "ITA";
    std::string seen;
    form.Label1.Observe([&] { seen += form.Label1.Caption().substr(0, 14) + "|"; });
    form.ProgressBar1.Observe([&, &bar = form.ProgressBar1] {
        seen += (bar.Visible() ? "bar " : "no bar ") + std::to_string(std::lround(bar.Value())) + " of " +
                std::to_string(std::lround(bar.Maximum())) + "|";
    });
    form.Command6(0).Observe([&] { seen += form.Command6(0).Enabled() ? "on|" : "off|"; });
    bench.files.contents["other.qlb"] = "1;other;9;;\n";
    bench.desktop.choices = {"other.qlb"};
    bench.desktop.onYield = [&](int) {
        const int cycles = bench.host.cycles;
        for (const int index : {0, 6, 8, 10})
            form.Command6_Click(static_cast<std::int16_t>(index));
        form.Command2_Click();
        form.Command4_Click();
        form.DropFile("other.qlb");
        EXPECT_EQ(bench.host.cycles, cycles);
    };
    for (int run = 0; run < 2; ++run) {
        seen.clear();
        form.Command6_Click(0);
        EXPECT_EQ(seen,
                  "off|on|Posizionare il||no bar 0 of 3|bar 0 of 3|bar 2 of 3|no bar 2 of 3|Programmazione|");
    }
    EXPECT_EQ(bench.desktop.choices.size(), 1U);
    EXPECT_EQ(bench.desktop.whyAwake, "") << "a simulation needs no machine that stays awake";
    EXPECT_EQ(form.ListView1[0].Items().front(), "Alfa");
    EXPECT_EQ(bench.Memory(), kWritten);
    seen.clear();
    form.Command2_Click();
    EXPECT_TRUE(seen.starts_with("off|Posizionare")) << "a read keeps the program button from being pressed";
    EXPECT_TRUE(seen.ends_with("|on|"));
    bench.desktop.onYield = [](int) {};
    FormWeb real({bench.host, bench.desktop, bench.files, bench.clock, platform::HidBackEnd::hidraw});
    real.Language = "ITA";
    real.Command2_Click();
    EXPECT_EQ(bench.desktop.whyAwake, "Un telecomando viene programmato o letto.");
}

TEST(Operation, CancelWorksWhileAWaitRunsAndOnlyThen) {
    // The yield and the result; when the remote is moved away behind its sections there is a second wait.
    for (const auto& [at, code, movedAwayAt] :
         {std::tuple{4, 13, 1000U}, {7, 13, 1000U}, {13, 0, 1000U}, {16, 13, 28U}}) {
        SCOPED_TRACE(at);
        Workbench bench(With({{movedAwayAt, movedAwayAt, fault::Status{1}}}), kProgramme);
        bench.form.Cancel();
        EXPECT_EQ(bench.form.Command6(3).Tag(), "") << "nothing to cancel yet";
        bench.desktop.onYield = [&, moment = at](int yield) {
            if (yield == moment) moment == 7 ? bench.form.Command6_Click(3) : bench.form.Cancel();
        };
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), code);
        EXPECT_EQ(bench.Memory() == kWritten, at > 12);
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0) << "a cancelled wait does not cancel the next";
    }
}

TEST(Operation, TheOtherIndexesSendAFrameOrSetTheFlagIfThereIsATransmitter) {
    // The vendor of a transmitter and the limits in its timing frame; no reply is read to any of the frames.
    for (const auto& [vendorId, timing] : std::vector<std::pair<std::uint16_t, std::string>>{
             {0, ""},
             {1240, "8 4 168 38 75 188 135 0 165 0 14 1 74 1"},
             {11025, "2 4 168 18 37 93 255 0 89 1 254 1 178 2"}}) {
        Scenario scenario;
        scenario.interfaces = {{vendorId, 1, true}};
        Workbench bench(scenario, kProgramme);
        for (const std::int16_t index : std::array<std::int16_t, 4>{5, 6, 8, 10})
            bench.form.Command6_Click(index);
        const bool connected = vendorId != 0;
        EXPECT_EQ(bench.host.Conversation(), connected ? "19 84 15 2 2 " + timing + " | 2 82 | 1 81 " : "");
        EXPECT_EQ(bench.host.cycles, connected ? 7 : 4);
        bench.form.Command6_Click(3);
        EXPECT_EQ(bench.form.Command6(3).Tag(), connected ? "True" : "");
        EXPECT_EQ(bench.form.Command6(10).Tag(), "");
        EXPECT_EQ(bench.desktop.messages,
                  std::vector<std::string>(connected ? 0 : 5, "Transmitter not connected"));
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), connected ? 13 : -1) << "the flag is there when the wait begins";
    }
}

TEST(Operation, OfAFormThatIsNotActiveShowsNoNumberAndNothingThatWasRead) {
    Workbench bench({}, kProgramme);
    bench.desktop.activeForm = "";
    bench.form.Command6_Click(0);
    EXPECT_EQ(bench.form.Label1.Caption(), "Operation succesfully completed");
    bench.form.Command2_Click();
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.form.Label1.Caption(), "");
    EXPECT_EQ(bench.form.Text1.Text(), "Text1");
}

TEST(Operation, ClosingAtAnyYieldEndsTheProgramThereAndThen) {
    Workbench whole({}, kProgramme);
    whole.form.Command6_Click(0);
    for (int at = 1; at <= whole.desktop.yields; ++at) {
        Workbench bench({}, kProgramme);
        int cycles = 0;
        std::string caption;
        bench.desktop.onYield = [&](int yield) {
            ASSERT_LE(yield, at) << "the operation went on";
            if (yield < at) return;
            at % 2 == 0 ? bench.form.Form_Unload() : bench.form.Command3_Click();
            cycles = bench.host.cycles;
            caption = bench.form.Label1.Caption();
        };
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.host.cycles, cycles) << at;
        EXPECT_EQ(bench.form.Label1.Caption(), caption) << at;
        EXPECT_EQ(bench.form.Text1.Text(), "Text1") << at;
        EXPECT_EQ(bench.files.deleted, std::vector<std::string>{"p.qlb"}) << at;
        EXPECT_EQ(bench.desktop.ends, 1) << at;
    }
}

TEST(Settings, AreReadWithABufferThatGrowsUntilTheSectionFits) {
    const std::vector<std::pair<std::size_t, std::vector<std::size_t>>> cases{
        {3, {500}}, {497, {500}}, {498, {500, 1000}}, {998, {500, 1000, 1500}}};
    for (const auto& [size, buffers] : cases) {
        Workbench bench;
        bench.files.section = std::string("a\0", 2) + std::string(size - 2, 'b');
        bench.form.Command2_Click();
        EXPECT_EQ(bench.files.sectionBuffers, buffers) << size;
        EXPECT_EQ(bench.files.sectionAsked, "message|/opt/vento/Firmware/Quarzolab.ini");
        EXPECT_EQ(ReadSettingsSection(bench.files, ""),
                  (std::vector<std::string>{"a", std::string(size - 2, 'b')}));
    }
}

// The codes whose texts, in Italian and in English, are more than "Error" and the number behind the code's.
TEST(MessageTable, HasTheseTextsAndNothingForOtherCodes) {
    const std::map<std::size_t, std::array<std::string, 2>> texts{
        {0, {"Programmazione eseguita con successo", "Operation succesfully completed"}},
        {1, {"Firmware Ok", "Firmware Ok"}},
        {2, {"Programmatore non collegato", "USB not connected"}},
        {3,
         {"Telecomando non rilevato, posizionare il telecomando di fronte al trasmettitore",
          "Remote not detected, place the remote in front of the transmitter"}},
        {13, {"Programmazione annullata", "Programming canceled"}},
        {15,
         {"Si \xC3\xA8\xC2\x8F verificato un errore! Ripetere la programmazione",
          "Attention an error occurred! Repeat programming"}},
        {20,
         {"Posizionare il telecomando di fronte al trasmettitore entro 1 minuto. Sincronizzazione in corso",
          "Place the remote control in front of the transmitter within 1 minute. Syncronization in "
          "progress"}},
        {22, {"APRI", "OPEN"}},
        {23, {"PROGRAMMA", "PROGRAM"}},
        {24, {"Leggi Programmazione", "CODE READING"}},
        {25, {"CHIUDI", "CLOSE"}}};
    for (std::size_t row = 0; row < 52; ++row) {
        const std::size_t language = row / 26;
        const std::size_t code = row % 26;
        const auto [id, number, text] = MessageTable[row];
        EXPECT_EQ(id, language == 0 ? "1" : "2") << row;
        EXPECT_EQ(number, std::to_string(code < 22 ? code : code - 22)) << row;
        const std::string error = (language == 0 ? "Errore " : "Error ") + std::to_string(code + 1);
        EXPECT_EQ(text, texts.contains(code) ? texts.at(code).at(language) : error) << row;
        if (code < 22) {
            EXPECT_EQ(MessageFor(ResultCode(code), language == 0 ? Language::italian : Language::english),
                      text);
        }
    }
    for (const int code : {22, 25, 26, 51, 99, 100, 255})
        EXPECT_EQ(MessageFor(ResultCode(code), Language::english), "") << code;
}

}  // namespace
}  // namespace vento::test
