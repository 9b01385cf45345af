#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "text/language.h"

/// How the form looks, whatever toolkit draws it: one table of the controls that are on the screen. Lengths
/// are in twips (1/1440 inch) from the top left corner of the form's client area.
namespace vento::desktop {

/// The controls that a window shows, each named as in FormWeb, members of arrays with their index; and one of
/// the window's own.
enum class ControlId : std::uint8_t {
    Image1,  ///< the logo
    Line1,   ///< the rule below it
    Command2,
    Command3,
    Command4,
    Command6_0,
    ListView1_0,
    ListView1_1,
    ListView1_2,
    Label1,
    ProgressBar1,
    hint,  ///< the key that helps now, in the bar's place while there is no bar
};

struct Rectangle {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

struct Font {
    std::string_view face;
    std::string_view fallback;  ///< a face of the same widths, where the first one is missing
    int height = 0;             ///< twips; a point is 20 of them
    bool bold = false;
};

inline constexpr Rectangle kFormArea{0, 0, 9270, 6705};
inline constexpr Colour kFormBackground{255, 255, 255};
inline constexpr Colour kFormText{0, 0, 0};

struct ControlLayout {
    ControlId id = ControlId::Image1;
    Rectangle place{};
    std::optional<int> tabIndex{};  ///< place in the tab order; nothing for what stands outside it
    Font font{};
    Colour background = kFormBackground;  ///< for the rule its own colour
    Phrase name{"", ""};      ///< for screen readers; empty where the control's own text is its name
    Phrase toolTip{"", ""};   ///< empty for none
    Phrase mnemonic{"", ""};  ///< the letter of the caption that presses the button with Alt held down
};

/// All controls that are shown, in tab order, those without a place in it first.
[[nodiscard]] std::span<const ControlLayout> ControlLayouts();

[[nodiscard]] const ControlLayout& LayoutOf(ControlId id);

/// The tool tip with the key that does the same.
[[nodiscard]] std::string ToolTipOf(const ControlLayout& control, Language language);

/// A length on a screen of so many dots per inch, rounded to the nearest pixel.
[[nodiscard]] int PixelsFromTwips(int twips, int dotsPerInch);

/// The other way, for what the toolkit measures.
[[nodiscard]] int TwipsFromPixels(int pixels, int dotsPerInch);

/// A rectangle on such a screen. Its edges are rounded, not its size, so that what adjoins in twips adjoins
/// in pixels.
[[nodiscard]] Rectangle PixelsFromTwips(const Rectangle& twips, int dotsPerInch);

}  // namespace vento::desktop
