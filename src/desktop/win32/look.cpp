#include "desktop/win32/look.h"

#include <algorithm>

#include "desktop/shown_text.h"
#include "platform/windows/text.h"

namespace vento::desktop::win32 {

COLORREF ColourOf(const Colour& colour) {
    return RGB(colour.red, colour.green, colour.blue);
}

OwnedBrush MakeBrush(const Colour& colour) {
    return OwnedBrush(::CreateSolidBrush(ColourOf(colour)));
}

OwnedFont MakeFont(const Font& font, int dotsPerInch) {
    const int height =
        -PixelsFromTwips(font.height, dotsPerInch);  // below zero: of the characters, not of the line
    return OwnedFont(::CreateFontW(height, 0, 0, 0, font.bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE,
                                   DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                   CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE,
                                   platform::Wide(font.face).c_str()));
}

RECT PlaceOf(const Rectangle& twips, int dotsPerInch) {
    const Rectangle pixels = PixelsFromTwips(twips, dotsPerInch);
    return {pixels.left, pixels.top, pixels.left + pixels.width, pixels.top + pixels.height};
}

std::wstring ShownLines(std::string_view utf8) {
    return platform::Wide(ShownText(utf8));
}

std::wstring MarkedCaption(std::string_view utf8, std::string_view mnemonic) {
    std::wstring marked;
    bool done = mnemonic.empty();
    for (const wchar_t letter : ShownLines(utf8)) {
        if (letter == L'&') marked += L'&';
        if (!done && letter == platform::Wide(mnemonic).front()) {
            marked += L'&';
            done = true;
        }
        marked += letter;
    }
    return marked;
}

void DrawCentred(HDC canvas, const std::wstring& text, const RECT& area, UINT marks) {
    const UINT format = DT_CENTER | DT_WORDBREAK | DT_EDITCONTROL | marks;
    RECT needed = area;
    ::DrawTextW(canvas, text.c_str(), -1, &needed, format | DT_CALCRECT);
    RECT place = area;
    place.top += std::max(area.bottom - needed.bottom, LONG{0}) / 2;
    ::DrawTextW(canvas, text.c_str(), -1, &place, format | DT_END_ELLIPSIS);
}

bool HighContrast() {
    HIGHCONTRASTW setting{};
    setting.cbSize = sizeof setting;
    return ::SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof setting, &setting, 0) != 0 &&
           (setting.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

}  // namespace vento::desktop::win32
