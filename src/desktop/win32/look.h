#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "desktop/layout.h"
#include "platform/windows/system.h"

/// The shared layout in the system's terms.
namespace vento::desktop::win32 {

/// Numbers of the program's resources. The system takes the icon with the lowest for the program's.
inline constexpr int kProgramIcon = 1;
inline constexpr int kProgrammeFileIcon = 2;
inline constexpr int kLogoPicture = 3;

struct GdiDeleter {
    void operator()(HGDIOBJ object) const { ::DeleteObject(object); }
};
using OwnedBitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, GdiDeleter>;
using OwnedFont = std::unique_ptr<std::remove_pointer_t<HFONT>, GdiDeleter>;
using OwnedBrush = std::unique_ptr<std::remove_pointer_t<HBRUSH>, GdiDeleter>;
using OwnedPen = std::unique_ptr<std::remove_pointer_t<HPEN>, GdiDeleter>;

struct ComDeleter {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using ComPointer = std::unique_ptr<Interface, ComDeleter>;

/// An object of a class that the system has; null where it has not.
template <class Interface>
[[nodiscard]] ComPointer<Interface> MakeObject(const CLSID& objectClass, const IID& interfaceId) {
    void* object = nullptr;
    ::CoCreateInstance(objectClass, nullptr, CLSCTX_INPROC_SERVER, interfaceId, &object);
    return ComPointer<Interface>(static_cast<Interface*>(object));
}

/// What the form is painted with: the layout's colours or, where the operator has asked the system for high
/// contrast, those of the system.
struct Palette {
    bool highContrast = false;
    COLORREF background = 0;
    COLORREF text = 0;
    COLORREF dimmed = 0;   ///< text of a button that can't be pressed
    COLORREF border = 0;   ///< of a button and a list
    COLORREF focused = 0;  ///< border of what has the focus
    COLORREF rule = 0;

    [[nodiscard]] static Palette Current();
};

/// How many lines wide the border of what has the focus is.
inline constexpr int kFocusLines = 3;

/// The width of a line, in pixels.
[[nodiscard]] int LineWidth(int dotsPerInch);

[[nodiscard]] COLORREF ColourOf(const Colour& colour);
/// The font on a screen of so many dots per inch.
[[nodiscard]] OwnedFont MakeFont(const Font& font, int dotsPerInch);
/// The same, made smaller until `text` fits into `room`, wrapped.
[[nodiscard]] OwnedFont MakeFittingFont(const Font& font, int dotsPerInch, const std::wstring& text,
                                        SIZE room);
[[nodiscard]] RECT PlaceOf(const Rectangle& twips, int dotsPerInch);

/// A caption or an item as it is shown.
[[nodiscard]] std::wstring ShownLines(std::string_view utf8);
/// The same with the ends of line that the system's fields and the clipboard have.
[[nodiscard]] std::wstring WithReturns(const std::wstring& lines);
/// A caption in which the letter that presses the button is marked, as the system has it.
[[nodiscard]] std::wstring MarkedCaption(std::string_view utf8, std::string_view mnemonic);

/// Draws a text into the middle of `area`, wrapped, without the end that does not fit. `marks` says what
/// becomes of the mark before a letter: DT_NOPREFIX for a text that has none, DT_HIDEPREFIX, or 0 to have the
/// letter underlined.
void DrawCentred(HDC canvas, const std::wstring& text, const RECT& area, UINT marks);

/// The logo in the size and the colours in which it was last drawn.
class Logo {
  public:
    /// Fills `area`.
    void Draw(HDC canvas, const RECT& area);

  private:
    OwnedBitmap picture_;
    SIZE size_{};
    Palette palette_;
};

}  // namespace vento::desktop::win32
