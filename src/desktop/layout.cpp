#include "desktop/layout.h"

#include <algorithm>
#include <array>

namespace vento::desktop {
namespace {

constexpr int kTwipsPerInch = 1440;

constexpr Colour kYellow{255, 255, 0};
constexpr Colour kDarkRed{192, 0, 0};
constexpr Colour kButtonGrey{240, 240, 240};

constexpr Font kProgramFont{"Calibri", "Carlito", 315, true};
constexpr Font kButtonFont{"Arial", "Liberation Sans", 240, false};
constexpr Font kListFont{"Calibri", "Carlito", 240, false};
constexpr Font kStatusFont{"Calibri", "Carlito", 225, true};
constexpr Font kHintFont{"Arial", "Liberation Sans", 180, false};

constexpr std::array kControls{
    ControlLayout{.id = ControlId::Image1, .place = {120, 240, 3300, 930}, .name = {"VENTO", "VENTO"}},
    ControlLayout{.id = ControlId::Line1, .place = {0, 1440, 10560, 30}, .background = kDarkRed},
    ControlLayout{.id = ControlId::ProgressBar1,
                  .place = {960, 6000, 7815, 375},
                  .tabIndex = 0,
                  .name = {"Avanzamento", "Progress"}},
    ControlLayout{
        .id = ControlId::hint, .place = {960, 6000, 7815, 375}, .font = kHintFont, .background = kButtonGrey},
    ControlLayout{.id = ControlId::Label1,
                  .place = {840, 4920, 7815, 855},
                  .tabIndex = 1,
                  .font = kStatusFont,
                  .name = {"Stato", "Status"}},
    ControlLayout{.id = ControlId::Command2,
                  .place = {3840, 3240, 2055, 855},
                  .tabIndex = 2,
                  .font = kButtonFont,
                  .background = kButtonGrey,
                  .toolTip = {"Legge dal telecomando i nomi dei suoi programmi",
                              "Reads the names of the programmes in the remote"},
                  .mnemonic = {"L", "R"}},
    ControlLayout{.id = ControlId::Command3,
                  .place = {6600, 3240, 2055, 855},
                  .tabIndex = 3,
                  .font = kButtonFont,
                  .background = kButtonGrey,
                  .toolTip = {"Chiude il programma", "Closes the program"},
                  .mnemonic = {"C", "L"}},  // C would do for CODE READING as well
    ControlLayout{.id = ControlId::Command4,
                  .place = {840, 2040, 1575, 735},
                  .tabIndex = 4,
                  .font = kButtonFont,
                  .background = kButtonGrey,
                  .toolTip = {"Apre un file di programmazione, che si può anche trascinare qui",
                              "Opens a programme file; it can be dropped here too"},
                  .mnemonic = {"A", "O"}},
    ControlLayout{.id = ControlId::ListView1_0,
                  .place = {2520, 2040, 1815, 735},
                  .tabIndex = 5,
                  .font = kListFont,
                  .name = {"Colonna TV", "TV column"}},
    ControlLayout{.id = ControlId::ListView1_1,
                  .place = {4680, 2040, 1815, 735},
                  .tabIndex = 6,
                  .font = kListFont,
                  .name = {"Colonna DTT", "DTT column"}},
    ControlLayout{.id = ControlId::ListView1_2,
                  .place = {6840, 2040, 1815, 735},
                  .tabIndex = 7,
                  .font = kListFont,
                  .name = {"Colonna SAT", "SAT column"}},
    ControlLayout{
        .id = ControlId::Command6_0,
        .place = {840, 3240, 2295, 855},
        .tabIndex = 11,
        .font = kProgramFont,
        .background = kYellow,
        .toolTip = {"Programma il telecomando con il file aperto", "Puts the open file into the remote"},
        .mnemonic = {"P", "P"}},
};

}  // namespace

std::span<const ControlLayout> ControlLayouts() {
    return kControls;
}

const ControlLayout& LayoutOf(ControlId id) {
    return *std::ranges::find(kControls, id, &ControlLayout::id);
}

std::string ToolTipOf(const ControlLayout& control, Language language) {
    std::string text = control.toolTip.In(language);
    const std::string key = control.mnemonic.In(language);
    return key.empty() ? text : text.append(" (Alt+").append(key).append(")");
}

int PixelsFromTwips(int twips, int dotsPerInch) {
    return (twips * dotsPerInch + kTwipsPerInch / 2) / kTwipsPerInch;
}

int TwipsFromPixels(int pixels, int dotsPerInch) {
    return (pixels * kTwipsPerInch + dotsPerInch / 2) / dotsPerInch;
}

Rectangle PixelsFromTwips(const Rectangle& twips, int dotsPerInch) {
    const int left = PixelsFromTwips(twips.left, dotsPerInch);
    const int top = PixelsFromTwips(twips.top, dotsPerInch);
    return {left, top, PixelsFromTwips(twips.left + twips.width, dotsPerInch) - left,
            PixelsFromTwips(twips.top + twips.height, dotsPerInch) - top};
}

}  // namespace vento::desktop
