#include "panel/form_web.h"

#include <gtest/gtest.h>

#include "chain/bench.h"
#include "panel/message_table.h"

namespace vento::test {
namespace {

const std::string kProgramme = Line(1, "Alfa", "1,2,3") + Line(1, "Alfa", "4,5,6");
const WordRuns kWritten{{256, WordsOf(3, 4)}};

TEST(StartUp, TakesTheCommandLineAndTheLanguage) {
    struct Case {
        std::string commandLine;
        std::optional<std::string> language;
        std::string path;
        bool loaded;
        std::string openCaption = "OPEN";
    };
    const std::vector<Case> cases{
        {"", "ITA", "", false, "APRI"},
        {"\"c d/p.qlb\"", "ENG", "c d/p.qlb", true},
        {"c\" d/p.q\"lb", "ita", "c d/p.qlb", true},
        {"\"c d/p.qlb\" \"c d/p.qlb\"", "DEU", "c d/p.qlb c d/p.qlb", false},
        {"c d/p.qlb", std::nullopt, "c d/p.qlb", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.commandLine);
        Workbench bench;
        FormWeb form({bench.host, bench.desktop, bench.files, bench.clock});
        EXPECT_FALSE(form.Command6(0).Visible());
        bench.files.contents["c d/p.qlb"] = kProgramme;
        bench.desktop.language = c.language;
        form.Form_Load(c.commandLine);
        EXPECT_EQ(form.Label2.Caption(), c.path);
        EXPECT_EQ(form.Command6(0).Visible(), c.loaded);
        EXPECT_EQ(form.Command4.Caption(), c.openCaption);
        EXPECT_EQ(form.Place.left, 14400 - 4635);
        EXPECT_EQ(form.Place.top, 8100 - 3352);
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
    bench.form.Command6_Click(3);
    bench.form.Command2_Click();
    bench.form.DropFile("p.qlb");
    EXPECT_EQ(bench.host.cycles, 0);
    EXPECT_EQ(bench.form.Label2.Caption(), "bad.qlb");
}

TEST(Open, LoadsOrSaysWhyNot) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {Line(2, "Beta", "1"), ""},
        {"1;a;1;;\n1\n", "Riga 2, campo 1: manca."},
        {"4;a;1;;\n", "Riga 1, campo 0: il numero della colonna"},
        {"", "Il file \u00E8 vuoto."},
    };
    for (const auto& [content, text] : cases) {
        SCOPED_TRACE(content);
        Workbench bench({}, kProgramme);
        bench.form.Language = "ITA";
        bench.files.contents["f.qlb"] = content;
        bench.desktop.choices = {"f.qlb", std::nullopt};
        bench.form.Command4_Click();
        bench.form.Command4_Click();
        ASSERT_EQ(bench.desktop.messages.size(), text.empty() ? 0U : 1U);
        EXPECT_TRUE(text.empty() || bench.desktop.messages[0].first.starts_with(text));
        EXPECT_EQ(bench.form.Label2.Caption(), "f.qlb");
        EXPECT_TRUE(bench.form.Command6(0).Visible());
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
    Scenario scenario;
    scenario.interfaces.clear();
    Workbench missing(scenario);
    missing.form.Command6_Click(3);
    EXPECT_EQ(missing.form.Command6(3).Tag(), "") << "without a transmitter there is only the box";
    EXPECT_EQ(missing.desktop.messages.size(), 1U);
}

// What the operator sees, as the controls tell it.
TEST(Operation, ShowsItsCourse) {
    Workbench bench({}, kProgramme);
    FormWeb& form = bench.form;
    form.Language = "ITA";
    std::string seen;
    form.Label1.Observe([&] { seen += form.Label1.Caption().substr(0, 14) + "|"; });
    form.ProgressBar1.Observe([&] {
        seen += (form.ProgressBar1.Visible() ? "bar " : "no bar ") +
                std::to_string(static_cast<int>(form.ProgressBar1.Value())) + " of " +
                std::to_string(static_cast<int>(form.ProgressBar1.Maximum())) + "|";
    });
    form.Command6(0).Observe([&] { seen += form.Command6(0).Enabled() ? "on|" : "off|"; });
    form.Command6_Click(0);
    EXPECT_EQ(seen,
              "off|on|Posizionare il||no bar 0 of 3|bar 0 of 3|bar 2 of 3|no bar 2 of 3|Programmazione|");
    seen.clear();
    form.Command2_Click();
    EXPECT_TRUE(seen.starts_with("off|Posizionare")) << "a read keeps the program button from being pressed";
    EXPECT_TRUE(seen.ends_with("|on|"));
}

TEST(Operation, OtherClicksDuringItDoNothing) {
    Workbench bench({}, kProgramme);
    bench.files.contents["other.qlb"] = "1;other;9;;\n";
    bench.desktop.onYield = [&](int) {
        const int cycles = bench.host.cycles;
        for (const int index : {0, 6, 8, 10})
            bench.form.Command6_Click(static_cast<std::int16_t>(index));
        bench.form.Command2_Click();
        bench.form.Command4_Click();
        bench.form.DropFile("other.qlb");
        EXPECT_EQ(bench.host.cycles, cycles);
        EXPECT_TRUE(bench.desktop.dialog.first.empty());
    };
    bench.form.Command6_Click(0);
    EXPECT_GT(bench.desktop.yields, 12);
    EXPECT_EQ(bench.Code(), 0);
    EXPECT_EQ(bench.form.ListView1[0].Items().front(), "Alfa");
    EXPECT_EQ(bench.Memory(), kWritten);
}

TEST(Operation, CancelWorksWhileAWaitRunsAndOnlyThen) {
    struct Case {
        const char* name;
        int yield;
        int code;
        bool byClick = false;    // of Command6(3), in place of the operator's cancel
        bool movedAway = false;  // when all sections are written, so that there is a second wait
    };
    for (const Case& c :
         {Case{"in a wait", 4, 13}, Case{"by a click", 7, 13, true},
          Case{"while sections are written", 13, 0}, Case{"in the second wait", 16, 13, false, true}}) {
        const std::uint32_t movedAt = c.movedAway ? 28 : 1000;
        Workbench bench(With({{movedAt, movedAt, simulator::fault::Status{1}}}), kProgramme);
        bench.form.Cancel();
        EXPECT_EQ(bench.form.Command6(3).Tag(), "") << c.name << ": nothing to cancel yet";
        bench.desktop.onYield = [&](int yield) {
            if (yield != c.yield) return;
            c.byClick ? bench.form.Command6_Click(3) : bench.form.Cancel();
        };
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), c.code) << c.name;
        EXPECT_EQ(bench.Memory() == kWritten, c.yield > 12) << c.name;
        bench.form.Command6_Click(0);
        EXPECT_EQ(bench.Code(), 0) << c.name << ": a cancelled wait does not cancel the next";
    }
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

TEST(Operation, AnotherActiveFormKeepsItsOutcomeToItself) {
    Workbench bench({}, kProgramme);
    bench.desktop.activeForm = "FormOther";
    bench.form.Command2_Click();
    EXPECT_EQ(bench.form.Text1.Text(), "Text1");
    EXPECT_EQ(bench.form.Label1.Caption(), "");
}

TEST(Settings, TheBufferGrowsUntilTheSectionFits) {
    const std::vector<std::pair<std::size_t, std::vector<std::size_t>>> cases{
        {0, {500}}, {497, {500}}, {498, {500, 1000}}, {998, {500, 1000, 1500}}};
    for (const auto& [size, buffers] : cases) {
        Workbench bench;
        bench.files.section = std::string(size, '\0');
        bench.desktop.onYield = [&](int) { bench.form.Cancel(); };
        bench.form.Command2_Click();
        EXPECT_EQ(bench.files.sectionBuffers, buffers) << size;
        EXPECT_EQ(bench.files.sectionFile, "/opt/vento/Firmware/Quarzolab.ini[message]");
    }
}

TEST(MessageTable, IsExactAndHasNothingForCodesOutside) {
    for (const std::size_t code : {4U, 5U, 6U, 7U, 8U, 9U, 10U, 11U, 12U, 14U, 16U, 17U, 18U, 19U, 21U}) {
        EXPECT_EQ(MessageTable[code][2], "Errore " + std::to_string(code + 1));
        EXPECT_EQ(MessageTable[code + kEnglishRow][2], "Error " + std::to_string(code + 1));
    }
    EXPECT_EQ(MessageTable[15][2], "Si \xC3\xA8\xC2\x8F verificato un errore! Ripetere la programmazione");
    EXPECT_EQ(
        MessageTable[46][2],
        "Place the remote control in front of the transmitter within 1 minute. Syncronization in progress");
    for (const int code : {22, 25, 26, 51, 99, 100, 255})
        EXPECT_EQ(TextOf(ResultCode(code), platform::Tongue::italian), "") << code;
}

}  // namespace
}  // namespace vento::test
