#pragma once

#include <string>

#include "desktop/layout.h"
#include "desktop/win32/look.h"
#include "platform/windows/system.h"
#include "text/language.h"

namespace vento::desktop::win32 {

/// A window of the system's within the form: it stands where the layout has it, in the layout's font. The
/// form, with which it goes, knows it by the number of its control.
class ControlWindow {
  public:
    /// `windowClass` and `style` are the system's; visible windows and tab stops are made by the layout and
    /// by `Show`.
    ControlWindow(HWND form, ControlId id, const wchar_t* windowClass, DWORD style, Language language);

    [[nodiscard]] HWND Handle() const { return handle_; }
    [[nodiscard]] const ControlLayout& Layout() const { return layout_; }

    /// Takes the place and the font that it has on a screen of so many dots per inch.
    void Scale(int dotsPerInch);

    void SetText(const std::wstring& text) const;
    void Show(bool visible) const;

  private:
    const ControlLayout& layout_;
    HWND handle_ = nullptr;
    OwnedFont font_;
};

}  // namespace vento::desktop::win32
