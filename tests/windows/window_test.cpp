/// The real window, used as an operator would. Needs a screen.
#include <gtest/gtest.h>
#include <windows.h>
// It needs that before it.
#include <commctrl.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "desktop/layout.h"
#include "support/scratch_folder.h"
#include "windows/driven_window.h"

namespace vento::test {
namespace {

using Texts = std::vector<std::string>;

const Texts kLabels{"Città 100", "Un ricevitore dal nome davvero troppo lungo per il suo riquadro",
                    "Gamma 300"};
const Texts kNoLabels(3);
constexpr const char* kPlain = "1";
constexpr const char* kSuccess = "Programmazione eseguita con successo";
constexpr const char* kWaiting = "Posizionare il telecomando di fronte al trasmettitore";

class Window : public ::testing::Test {
  protected:
    /// A programme file with three lists of so many bytes that read back as PROVA-01, PROVA-02, PROVA-03.
    [[nodiscard]] std::string Programme(const std::string& name, int length = 400) const {
        std::string text;
        for (int column = 1; column <= 3; ++column) {
            std::string codes = "208,210,207,214,193,173,176," + std::to_string(176 + column);
            for (int i = 8; i < length; ++i)
                codes += ',' + std::to_string(column);
            std::string label = kLabels[static_cast<std::size_t>(column) - 1];
            if (const auto found = label.find("à"); found != std::string::npos)
                label.replace(found, 2, "\xE0");
            const std::string line = std::to_string(column) + ';' + label + ';' + codes + ";x;y\n";
            text += line + line;
        }
        return folder_.Write(name, text);
    }

    /// What to simulate: the plain simulation but for these keys.
    [[nodiscard]] std::string Scenario(const std::string& keys) const {
        return folder_.Write("scenario.json", "{" + keys + "}");
    }
    [[nodiscard]] std::string Slowly(const std::string& keys = {}) const {
        return Scenario(R"("reportMicroseconds": 3000)" + (keys.empty() ? "" : ", " + keys));
    }
    [[nodiscard]] bool IsThere(const std::string& name) const {
        return std::filesystem::exists(folder_ / name);
    }

    ScratchFolder folder_;
    RegionSetTo italian_{"ITA"};
};

TEST_F(Window, StartsWithoutAFileInTheLanguageOfTheRegion) {
    const std::vector<std::pair<std::string, Texts>> languages = {
        {"ITA", {"Leggi Programmazione", "CHIUDI", "APRI"}},
        {"ENU", {"CODE READING", "CLOSE", "OPEN"}},
        {"ita", {"CODE READING", "CLOSE", "OPEN"}},
    };
    for (const auto& [language, captions] : languages) {
        const RegionSetTo region(language);
        const DrivenWindow window("", kPlain);
        EXPECT_EQ(window.Buttons(), captions);
        EXPECT_EQ(window.Items(), kNoLabels);
        EXPECT_EQ(window.Status(), "");
        EXPECT_EQ(window.Bar(), std::nullopt);
        EXPECT_EQ(TextOf(window.Form()), language == "ITA" ? "VENTO-Programmazione (simulazione)"
                                                           : "VENTO-Programmazione (simulation)");
        window.TakePicture("start-" + language);
        window.Press(captions[1]);
        EXPECT_EQ(window.Ends(), 0U);
    }
}

// In the order of the system's windows, which is the tab order.
void ExpectLayout(const DrivenWindow& window, int dotsPerInch) {
    using desktop::ControlId;
    const std::vector<std::pair<HWND, ControlId>> controls = {
        {window.Control(WC_STATICW, 0), ControlId::Image1},
        {window.Control(PROGRESS_CLASSW, 0), ControlId::ProgressBar1},
        {window.Control(WC_STATICW, 1), ControlId::Label1},
        {window.Control(WC_BUTTONW, 0), ControlId::Command2},
        {window.Control(WC_BUTTONW, 1), ControlId::Command3},
        {window.Control(WC_BUTTONW, 2), ControlId::Command4},
        {window.Control(WC_LISTBOXW, 0), ControlId::ListView1_0},
        {window.Control(WC_LISTBOXW, 1), ControlId::ListView1_1},
        {window.Control(WC_LISTBOXW, 2), ControlId::ListView1_2},
        {window.Control(WC_BUTTONW, 3), ControlId::Command6_0},
    };
    for (const auto& [handle, id] : controls) {
        const desktop::Rectangle expected =
            desktop::PixelsFromTwips(desktop::LayoutOf(id).place, dotsPerInch);
        const RECT place = PlaceOf(handle);
        EXPECT_EQ(
            (desktop::Rectangle{place.left, place.top, place.right - place.left, place.bottom - place.top}),
            expected)
            << static_cast<int>(id);
    }
}

TEST_F(Window, IsLaidOutAnewWhenItComesToAScreenOfAnotherDensity) {
    const DrivenWindow window('"' + Programme("VENTO.qlb") + '"', kPlain);
    ExpectLayout(window, 96);
    RECT area{};
    ::GetClientRect(window.Form(), &area);
    EXPECT_EQ(area.right, 618);
    EXPECT_EQ(area.bottom, 447);
    RECT place{};
    ::GetWindowRect(window.Form(), &place);
    EXPECT_NEAR(place.left + place.right, ::GetSystemMetrics(SM_CXSCREEN), 2);
    EXPECT_NEAR(place.top + place.bottom, ::GetSystemMetrics(SM_CYSCREEN), 2);
    for (const int dotsPerInch : {144, 192, 96}) {
        window.ChangeDensity(dotsPerInch);
        ExpectLayout(window, dotsPerInch);
        window.TakePicture("density-" + std::to_string(dotsPerInch));
    }
}

TEST_F(Window, ProgramsWithAMovingBarReadsBackAndDeletesTheFile) {
    struct Case {
        const char* language;
        const char* program;
        const char* read;
        const char* waiting;
        const char* success;
    };
    for (const Case& c : std::vector<Case>{{"ITA", "PROGRAMMA", "Leggi Programmazione", kWaiting, kSuccess},
                                           {"ENU", "PROGRAM", "CODE READING", "Place the remote control",
                                            "Operation succesfully completed"}}) {
        const RegionSetTo region(c.language);
        const std::string file = Programme("VENTO perché no.qlb");
        const DrivenWindow window('"' + file + '"', Slowly(R"("remote": {"arrivesAtPoll": 100})"));
        EXPECT_EQ(window.Items(), kLabels);
        window.TakePicture(std::string("loaded-") + c.language);
        window.Press(c.program);
        EXPECT_TRUE(window.AwaitStatus(c.waiting));
        window.TakePicture(std::string("waiting-") + c.language);
        std::vector<int> values;
        while (window.Status() != c.success && values.size() < 100'000) {
            if (const auto bar = window.Bar()) values.push_back(*bar);
            if (!values.empty() && values.back() > 300) window.TakePicture(std::string("bar-") + c.language);
        }
        EXPECT_TRUE(std::ranges::is_sorted(values));
        EXPECT_GT(std::set(values.begin(), values.end()).size(), 5U);
        EXPECT_EQ(window.Bar(), std::nullopt);
        window.TakePicture(std::string("success-") + c.language);
        window.Press(c.read);
        EXPECT_TRUE(window.AwaitStatus("TV PROVA-01\nDTT PROVA-02\nSAT PROVA-03"));
        window.TakePicture(std::string("read-") + c.language);
        ::PostMessageW(window.Form(), WM_CLOSE, 0, 0);
        EXPECT_EQ(window.Ends(), 0U);
        EXPECT_FALSE(IsThere("VENTO perché no.qlb"));
    }
}

TEST_F(Window, OpensAFileThroughTheDialogWhichRemembersItOrSaysWhyNot) {
    const DrivenWindow window("", kPlain);
    window.Press("APRI");
    const HWND dialog = window.Dialog();
    EXPECT_EQ(TextOf(dialog), "Seleziona il file da aprire");
    EXPECT_EQ(window.Choose(dialog, Programme("VENTO perché.qlb")), "");
    EXPECT_TRUE(Eventually([&] { return window.Button("PROGRAMMA"); }));
    EXPECT_EQ(window.Items(), kLabels);
    window.Press("APRI");  // and once more, to think better of it
    const HWND again = window.Dialog();
    window.TakePicture("dialog");
    EXPECT_EQ(window.Choose(again, ""), "VENTO perché.qlb");
    EXPECT_EQ(window.Items(), kLabels);

    window.Press("APRI");
    static_cast<void>(window.Choose(window.Dialog(), folder_.Write("VENTO-è.qlb", "1;a;1\n")));
    const HWND box = window.Dialog();
    window.TakePicture("bad-file");
    for (const char* part : {"Riga 1, campo 3", "VENTO-è.qlb"})
        EXPECT_NE(window.TextsIn(box).find(part), std::string::npos) << window.TextsIn(box);
    window.Answer(box);
    EXPECT_EQ(window.Items(), kNoLabels);
}

TEST_F(Window, LoadsAProgrammeFileThatIsDroppedOnIt) {
    static_cast<void>(Programme("VENTO perché.QLB"));
    static_cast<void>(folder_.Write("letter.txt", "1;a;1;x;y\n"));
    const DrivenWindow window("", kPlain);
    window.Drop(folder_ / "letter.txt");
    window.Drop(folder_ / "VENTO perché.QLB");
    EXPECT_TRUE(Eventually([&] { return window.Button("PROGRAMMA"); }));
    EXPECT_EQ(window.Items(), kLabels);
}

TEST_F(Window, EscapeCancelsTheWaitAndNothingElse) {
    const DrivenWindow window('"' + Programme("VENTO.qlb") + '"', Slowly(R"("remote": null)"));
    window.Type(VK_ESCAPE);
    for (const char* caption : {"PROGRAMMA", "Leggi Programmazione"}) {
        window.Press(caption);
        EXPECT_TRUE(window.AwaitStatus(kWaiting));
        EXPECT_EQ(::IsWindowEnabled(window.Button("PROGRAMMA")) != 0, caption == std::string("PROGRAMMA"));
        window.Type(VK_ESCAPE);
        EXPECT_TRUE(window.AwaitStatus("Programmazione annullata"));
    }
}

TEST_F(Window, ClosingEndsAnOperationOrADialogAndDeletesTheFile) {
    const std::vector<std::pair<UINT, WPARAM>> ways = {{WM_CLOSE, 0}, {WM_ENDSESSION, TRUE}, {BM_CLICK, 0}};
    for (const auto& [message, wParam] : ways) {
        for (const char* remote : {R"("remote": null)", ""}) {
            const DrivenWindow window('"' + Programme("VENTO.qlb", 1000) + '"', Slowly(remote));
            window.Press("PROGRAMMA");
            EXPECT_TRUE(*remote != '\0' ? window.AwaitStatus(kWaiting)
                                        : Eventually([&] { return window.Bar(); }).has_value());
            for (const char* caption : {"PROGRAMMA", "Leggi Programmazione", "APRI"})
                window.Press(caption);  // which begins nothing
            ::PostMessageW(message == BM_CLICK ? window.Button("CHIUDI") : window.Form(), message, wParam, 0);
            EXPECT_EQ(window.Ends(), 0U);
            EXPECT_FALSE(IsThere("VENTO.qlb"));
        }
    }
    const DrivenWindow window('"' + Programme("VENTO.qlb") + '"', kPlain);
    window.Press("APRI");
    ASSERT_NE(window.Dialog(), nullptr);
    ::PostMessageW(window.Form(), WM_ENDSESSION, TRUE, 0);
    EXPECT_EQ(window.Ends(), 0U);
    EXPECT_FALSE(IsThere("VENTO.qlb"));
}

TEST_F(Window, TellsOfATransmitterThatIsMissingOrMayNotBeOpened) {
    for (const char* interfaces : {"", R"({"vendorId": 1240, "productId": 1, "opens": false})"}) {
        const DrivenWindow window("", Scenario(R"("interfaces": [)" + std::string(interfaces) + "]"));
        window.Press("Leggi Programmazione");
        const HWND box = window.Dialog();
        const std::string texts = window.TextsIn(box);
        EXPECT_NE(texts.find("Programmatore non collegato\n"), std::string::npos) << texts;
        EXPECT_EQ(texts.find("opens") != std::string::npos, *interfaces != '\0') << texts;
        window.TakePicture(*interfaces != '\0' ? "box-detail" : "box");
        window.Answer(box);
        EXPECT_EQ(window.Status(), "");
    }
}

TEST_F(Window, IsUsedByKeyboardAlone) {
    const DrivenWindow window('"' + Programme("VENTO.qlb", 8) + '"', kPlain);
    const auto tab = [&window] {
        const HWND focus = Eventually([&] { return window.Focus(); });
        window.Type(VK_TAB);
        EXPECT_TRUE(Eventually([&] { return window.Focus() != focus; }));
        return Caption(focus);
    };
    EXPECT_TRUE(Eventually([&] { return window.Focus() == window.Button("Leggi Programmazione"); }));
    Texts focused(8);
    std::ranges::generate(focused, tab);
    EXPECT_EQ(focused, (Texts{"Leggi Programmazione", "CHIUDI", "APRI", "Colonna TV", "Colonna DTT",
                              "Colonna SAT", "PROGRAMMA", "Leggi Programmazione"}));
    for (const WPARAM key : {WPARAM{VK_RETURN}, WPARAM{VK_SPACE}}) {
        while (window.Focus() != window.Button("PROGRAMMA"))
            tab();
        window.Type(key);
        EXPECT_TRUE(window.AwaitStatus(kSuccess));
        EXPECT_EQ(window.Focus(), window.Button("PROGRAMMA")) << "it keeps the focus";
        window.Type('l', true);
        EXPECT_TRUE(window.AwaitStatus("PROVA-01"));
    }
    window.Type('c', true);
    EXPECT_EQ(window.Ends(), 0U);
}

TEST_F(Window, RefusesAScenarioThatItCanNotUse) {
    const std::string file = Programme("VENTO.qlb");
    for (const std::string& scenario :
         {folder_.Path("missing.json"), Scenario(R"("remote": {"version": 300})")}) {
        const DrivenWindow window('"' + file + '"', scenario);
        EXPECT_EQ(window.Form(), nullptr);
        const HWND box = window.Dialog();
        EXPECT_NE(window.TextsIn(box).find(scenario + ": "), std::string::npos) << window.TextsIn(box);
        window.Answer(box);
        EXPECT_EQ(window.Ends(), 1U);
        EXPECT_TRUE(IsThere("VENTO.qlb"));
    }
}

}  // namespace
}  // namespace vento::test
