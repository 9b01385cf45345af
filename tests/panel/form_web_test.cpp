#include "panel/form_web.h"

#include <gtest/gtest.h>

#include "chain/bench.h"
#include "panel/message_table.h"

namespace vento {
namespace {

using simulator::Scenario;
using test::Bytes;
using test::Line;
using test::Workbench;

const std::string kProgramme = Line(1, "Alfa", "1,2,3") + Line(1, "Alfa", "4,5,6");

Scenario WithoutTransmitter() {
    Scenario scenario;
    scenario.interfaces.clear();
    return scenario;
}

Scenario WithoutRemote() {
    Scenario scenario;
    scenario.remote.reset();
    return scenario;
}

TEST(StartUp, TakesTheCommandLineAndTheLanguage) {
    struct Case {
        const char* name;
        std::string commandLine;
        std::optional<std::string> language;
        std::string path;
        bool loaded;
        std::string captions;
    };
    const std::string italian = "APRI|PROGRAMMA|Leggi Programmazione|CHIUDI";
    const std::string english = "OPEN|PROGRAM|CODE READING|CLOSE";
    const std::vector<Case> cases{
        {"nothing", "", "ITA", "", false, italian},
        {"a path in quotes", "\"c d/p.qlb\"", "ENG", "c d/p.qlb", true, english},
        {"quotes anywhere", "c\" d/p.q\"lb", "ita", "c d/p.qlb", true, english},
        {"two paths are one string", "\"c d/p.qlb\" \"c d/p.qlb\"", "DEU", "c d/p.qlb c d/p.qlb", false,
         english},
        {"no language", "c d/p.qlb", std::nullopt, "c d/p.qlb", true, english},
    };
    for (const Case& c : cases) {
        Workbench bench;
        FormWeb form({bench.host, bench.desktop, bench.files, bench.clock});
        EXPECT_EQ(form.Text1.Text(), "Text1");
        EXPECT_FALSE(form.Command6(0).Visible());
        bench.files.contents["c d/p.qlb"] = kProgramme;
        bench.desktop.language = c.language;
        form.Form_Load(c.commandLine);
        EXPECT_EQ(form.Label2.Caption(), c.path) << c.name;
        EXPECT_EQ(form.Command6(0).Visible(), c.loaded) << c.name;
        EXPECT_EQ(form.Command4.Caption() + "|" + form.Command6(0).Caption() + "|" + form.Command2.Caption() +
                      "|" + form.Command3.Caption(),
                  c.captions)
            << c.name;
        EXPECT_EQ(form.Command6(3).Caption() + form.Command6(10).Caption(), "") << c.name;
        EXPECT_EQ(form.Place.left, 14400 - 4635);
        EXPECT_EQ(form.Place.top, 8100 - 3352);
        EXPECT_TRUE(bench.desktop.messages.empty())
            << c.name << ": a bad command line is passed over in silence";
    }
}

TEST(WayOut, DeletesTheFileNamedLastAndEndsOnce) {
    Workbench bench({}, kProgramme);
    bench.files.contents["bad.qlb"] = "1;2\n";
    bench.desktop.choices = {"bad.qlb", std::nullopt};
    bench.form.Command4_Click();
    bench.form.Command4_Click();
    bench.form.Command3_Click();
    bench.form.Form_Unload();
    EXPECT_EQ(bench.files.deleted, std::vector<std::string>{"bad.qlb"});
    EXPECT_EQ(bench.desktop.ends, 1);
    bench.form.Command6_Click(0);
    bench.form.Command6_Click(3);
    bench.form.Command2_Click();
    bench.form.DropFile("p.qlb");
    EXPECT_EQ(bench.host.cycles, 0);
    EXPECT_EQ(bench.form.Label2.Caption(), "bad.qlb");
}

TEST(Open, LoadsOrSaysWhyNot) {
    struct Case {
        const char* name;
        std::optional<std::string> choice;
        std::string italian;
        std::string english;
    };
    const std::vector<Case> cases{
        {"cancel", std::nullopt, "", ""},
        {"good", "good.qlb", "", ""},
        {"missing", "gone.qlb", "Impossibile aprire il file: No such file or directory",
         "The file could not be opened: No such file or directory"},
        {"short line", "short.qlb", "Riga 2, campo 1: manca.", "Line 2, field 1: missing."},
        {"bad column", "column.qlb", "Riga 1, campo 0: il numero della colonna",
         "Line 1, field 0: the column number"},
        {"empty", "empty.qlb", "Il file \u00E8 vuoto.", "The file is empty."},
    };
    for (const std::string language : {"ITA", "ENG"}) {
        for (const Case& c : cases) {
            for (const bool dropped : {false, true}) {
                if (dropped && !c.choice) continue;
                Workbench bench({}, kProgramme);
                bench.form.Language = language;
                bench.files.contents = {{"good.qlb", Line(2, "Beta", "1")},
                                        {"short.qlb", "1;a;1;;\n1\n"},
                                        {"column.qlb", "4;a;1;;\n"},
                                        {"empty.qlb", ""}};
                if (dropped) {
                    bench.form.DropFile(*c.choice);
                } else {
                    bench.desktop.choices = {c.choice};
                    bench.form.Command4_Click();
                    EXPECT_EQ(bench.desktop.dialog.first, "Seleziona il file da aprire");
                    EXPECT_EQ(bench.desktop.dialog.second, "File VENTO (*.qlb)|VENTO*.qlb|");
                }
                const std::string& text = language == "ITA" ? c.italian : c.english;
                ASSERT_EQ(bench.desktop.messages.size(), text.empty() ? 0U : 1U) << c.name;
                if (!text.empty()) {
                    EXPECT_TRUE(bench.desktop.messages[0].first.starts_with(text))
                        << bench.desktop.messages[0].first;
                }
                EXPECT_EQ(bench.form.Label2.Caption(), c.choice.value_or("p.qlb")) << c.name;
                EXPECT_EQ(bench.form.Label1.Caption(), "") << c.name;
                EXPECT_TRUE(bench.form.Command6(0).Visible()) << c.name;
            }
        }
    }
}

TEST(MissingTransmitter, TheBoxSaysItAndNothingElseHappens) {
    for (const bool italian : {true, false}) {
        for (const bool read : {true, false}) {
            Scenario scenario = WithoutTransmitter();
            if (read) scenario.interfaces = {{1240, 1, false}};
            Workbench bench(scenario, kProgramme);
            bench.form.Language = italian ? "ITA" : "ENG";
            bench.form.Label1.SetCaption("before");
            if (read) {
                bench.form.Command2_Click();
            } else {
                bench.form.Command6_Click(0);
            }
            ASSERT_EQ(bench.desktop.messages.size(), 1U);
            EXPECT_EQ(bench.desktop.messages[0].first,
                      italian ? "Programmatore non collegato" : "Transmitter not connected");
            EXPECT_EQ(bench.desktop.messages[0].second.empty(), !read)
                << "one that may not be opened is told apart";
            EXPECT_EQ(bench.form.Label1.Caption(), "before");
            EXPECT_EQ(bench.form.Text1.Text(), "Text1");
            EXPECT_TRUE(bench.form.Command6(0).Enabled());
            EXPECT_FALSE(bench.form.LatestOutcome());
            bench.form.Command6_Click(3);
            EXPECT_EQ(bench.form.Command6(3).Tag(), "");
        }
    }
}

TEST(Command6, EachIndexDoesItsOwn) {
    struct Case {
        std::int16_t index;
        std::size_t frames;
        std::string tag;
    };
    for (const Case& c :
         {Case{3, 0, "True"}, Case{6, 2, ""}, Case{8, 1, ""}, Case{10, 0, ""}, Case{99, 0, ""}}) {
        Workbench bench({}, kProgramme);
        bench.form.Label1.SetVisible(false);
        bench.form.Command6_Click(c.index);
        EXPECT_EQ(bench.host.frames.size(), c.frames) << c.index;
        EXPECT_EQ(bench.form.Command6(3).Tag(), c.tag) << c.index;
        EXPECT_TRUE(bench.form.Label1.Visible()) << c.index;
        EXPECT_FALSE(bench.form.LatestOutcome()) << c.index;
    }
    EXPECT_THROW(static_cast<void>(Workbench().form.Command6(6)), std::out_of_range);
}

// What the operator sees, as the controls tell it.
TEST(Operation, ShowsItsCourse) {
    Workbench bench({}, kProgramme);
    bench.form.Language = "ITA";
    std::vector<std::string> seen;
    bench.form.Label1.Observe([&] { seen.push_back(bench.form.Label1.Caption()); });
    bench.form.ProgressBar1.Observe([&] {
        const ProgressBar& bar = bench.form.ProgressBar1;
        seen.push_back((bar.Visible() ? "bar " : "no bar ") + std::to_string(static_cast<int>(bar.Value())) +
                       " of " + std::to_string(static_cast<int>(bar.Maximum())));
    });
    bench.form.Command6(0).Observe(
        [&] { seen.emplace_back(bench.form.Command6(0).Enabled() ? "on" : "off"); });
    bench.form.Command6_Click(0);
    EXPECT_EQ(
        seen,
        (std::vector<std::string>{
            "off", "on",
            "Posizionare il telecomando di fronte al trasmettitore entro 1 minuto. Sincronizzazione in corso",
            "", "no bar 0 of 3", "bar 0 of 3", "bar 2 of 3", "no bar 2 of 3",
            "Programmazione eseguita con successo"}));
    seen.clear();
    bench.form.Command2_Click();
    EXPECT_EQ(seen.front(), "off") << "a read keeps the program button from being pressed";
    EXPECT_EQ(seen.back(), "on");
}

TEST(Operation, OtherClicksDuringItDoNothing) {
    Workbench bench({}, kProgramme);
    bench.files.contents["other.qlb"] = "1;other;9;;\n";
    int nested = 0;
    bench.desktop.onYield = [&](int) {
        const int cycles = bench.host.cycles;
        for (const int index : {0, 6, 8, 10})
            bench.form.Command6_Click(static_cast<std::int16_t>(index));
        bench.form.Command2_Click();
        bench.form.Command4_Click();
        bench.form.DropFile("other.qlb");
        EXPECT_EQ(bench.host.cycles, cycles);
        EXPECT_TRUE(bench.desktop.dialog.first.empty());
        ++nested;
    };
    bench.form.Command6_Click(0);
    EXPECT_GT(nested, 12);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.form.ListView1[0].Items().front(), "Alfa");
    EXPECT_EQ(bench.Stored(256, 3), (Bytes{4, 5, 6}));
}

TEST(Operation, CancelWorksWhileTheWaitRunsAndOnlyThen) {
    struct Case {
        const char* name;
        bool remote;
        int yield;
        bool byClick;  // of Command6(3), in place of the operator's cancel
        int code;
    };
    for (const Case& c :
         {Case{"without a remote", false, 7, false, 13}, Case{"in a good run", true, 4, false, 13},
          Case{"by a click", false, 7, true, 13}, Case{"while sections are written", true, 13, false, 0}}) {
        Workbench bench(c.remote ? Scenario{} : WithoutRemote(), kProgramme);
        bench.form.Cancel();
        EXPECT_EQ(bench.form.Command6(3).Tag(), "") << c.name << ": nothing to cancel yet";
        bench.desktop.onYield = [&](int yield) {
            if (yield != c.yield) return;
            c.byClick ? bench.form.Command6_Click(3) : bench.form.Cancel();
        };
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), c.code) << c.name;
        bench.desktop.onYield = nullptr;
        if (!c.remote) continue;
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0) << c.name << ": a cancelled wait does not cancel the next";
    }
    Scenario scenario;  // in the second wait, when all sections are written
    scenario.faults = {{28, 28, simulator::fault::Status{1}}};
    Workbench again(scenario, kProgramme);
    again.desktop.onYield = [&](int yield) {
        if (yield > 13) again.form.Cancel();
    };
    again.form.Command6_Click(0);
    EXPECT_EQ(again.Code(), 13);
    EXPECT_EQ(again.Stored(256, 3), (Bytes{4, 5, 6}));
}

TEST(Operation, ClosingAtAnyYieldEndsTheProgramThereAndThen) {
    Workbench whole({}, kProgramme);
    whole.form.Command6_Click(0);
    for (int at = 1; at <= whole.desktop.yields; ++at) {
        for (const bool titleBar : {false, true}) {
            Workbench bench({}, kProgramme);
            int cycles = 0;
            std::string caption;
            bench.desktop.onYield = [&](int yield) {
                ASSERT_LE(yield, at) << "the operation went on";
                if (yield < at) return;
                titleBar ? bench.form.Form_Unload() : bench.form.Command3_Click();
                cycles = bench.host.cycles;
                caption = bench.form.Label1.Caption();
            };
            bench.form.Command6_Click(0);
            EXPECT_EQ(bench.host.cycles, cycles) << at;
            EXPECT_EQ(bench.form.Label1.Caption(), caption) << at;
            EXPECT_EQ(bench.form.Text1.Text(), "Text1") << at;
            EXPECT_EQ(bench.files.deleted, std::vector<std::string>{"p.qlb"}) << at;
            EXPECT_EQ(bench.desktop.ends, 1) << at;
            EXPECT_TRUE(bench.form.Ended());
            EXPECT_EQ(bench.host.openHandles, 0) << at;
        }
    }
}

TEST(Operation, AnotherActiveFormKeepsItsOutcomeToItself) {
    Workbench bench({}, kProgramme);
    bench.desktop.activeForm = "FormOther";
    bench.form.Command2_Click();
    EXPECT_EQ(bench.form.Text1.Text(), "Text1");
    EXPECT_EQ(bench.form.Label1.Caption(), "");
}

TEST(Settings, TheBufferGrowsUntilTheSectionFits) {
    struct Case {
        std::size_t needed;
        std::vector<std::size_t> buffers;
    };
    for (const Case& c : {Case{0, {500}}, Case{4, {500}}, Case{497, {500}}, Case{498, {500, 1000}},
                          Case{998, {500, 1000, 1500}}}) {
        Workbench bench(WithoutRemote());
        if (c.needed > 0) bench.files.section = std::string(c.needed - 1, 'a') + '\0';
        bench.desktop.onYield = [&](int) { bench.form.Cancel(); };
        bench.form.Command2_Click();
        EXPECT_EQ(bench.files.sectionBuffers, c.buffers) << c.needed;
        EXPECT_EQ(bench.files.sectionFile, "/opt/vento/Firmware/Quarzolab.ini[message]");
        EXPECT_EQ(bench.Code(), 13);
    }
}

TEST(MessageTable, HalvesMatchAndCodesOutsideHaveNoText) {
    for (std::size_t row = 0; row < kEnglishRow; ++row) {
        EXPECT_EQ(MessageTable[row][0], "1");
        EXPECT_EQ(MessageTable[row + kEnglishRow][0], "2");
        EXPECT_EQ(MessageTable[row][1], MessageTable[row + kEnglishRow][1]) << row;
    }
    EXPECT_EQ(MessageTable[15][2], "Si \xC3\xA8\xC2\x8F verificato un errore! Ripetere la programmazione");
    EXPECT_EQ(
        MessageTable[46][2],
        "Place the remote control in front of the transmitter within 1 minute. Syncronization in progress");
    for (const auto tongue : {platform::Tongue::italian, platform::Tongue::english}) {
        for (const int code : {22, 25, 26, 51, 99, 100, 255})
            EXPECT_EQ(TextOf(ResultCode(code), tongue), "") << code;
    }
}

}  // namespace
}  // namespace vento
