#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "desktop/layout.h"
#include "platform/windows/system.h"

/// The shared layout in the system's terms.
namespace vento::desktop::win32 {

struct GdiDeleter {
    void operator()(HGDIOBJ object) const { ::DeleteObject(object); }
};
using OwnedBitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, GdiDeleter>;
using OwnedFont = std::unique_ptr<std::remove_pointer_t<HFONT>, GdiDeleter>;
using OwnedBrush = std::unique_ptr<std::remove_pointer_t<HBRUSH>, GdiDeleter>;
using OwnedPen = std::unique_ptr<std::remove_pointer_t<HPEN>, GdiDeleter>;

[[nodiscard]] COLORREF ColourOf(const Colour& colour);
[[nodiscard]] OwnedBrush MakeBrush(const Colour& colour);
/// The font on a screen of so many dots per inch.
[[nodiscard]] OwnedFont MakeFont(const Font& font, int dotsPerInch);
[[nodiscard]] RECT PlaceOf(const Rectangle& twips, int dotsPerInch);

/// A caption or an item as it is shown.
[[nodiscard]] std::wstring ShownLines(std::string_view utf8);
/// A caption in which the letter that presses the button is marked, as the system has it.
[[nodiscard]] std::wstring MarkedCaption(std::string_view utf8, std::string_view mnemonic);

/// Draws a text into the middle of `area`, wrapped, without the end that does not fit. `marks` says what
/// becomes of the mark before a letter: DT_NOPREFIX for a text that has none, DT_HIDEPREFIX, or 0 to have the
/// letter underlined.
void DrawCentred(HDC canvas, const std::wstring& text, const RECT& area, UINT marks);

/// Whether the operator has asked the system for colours of high contrast; ours then give way.
[[nodiscard]] bool HighContrast();

}  // namespace vento::desktop::win32
