#pragma once

#include "platform/windows/system.h"
// It needs that before it.
#include <oleacc.h>

#include <string>

#include "desktop/layout.h"
#include "desktop/win32/look.h"
#include "text/language.h"

namespace vento::desktop::win32 {

/// Added to the number of a control: the first few are the system's, for Enter and Esc.
inline constexpr int kFirstControl = 100;

/// The tool tips of a form.
class ToolTips {
  public:
    explicit ToolTips(HWND form);

    /// From now on the text, in as many lines as it takes, comes up over this window within the form; none if
    /// empty.
    void SetText(HWND window, const std::wstring& text) const;

    void Scale(int dotsPerInch) const;

  private:
    HWND form_;
    HWND tips_;
};

/// What screen readers are told of windows, beside what the system tells them by itself. Does nothing where
/// the system lacks the service.
class Accessibility {
  public:
    Accessibility();

    void SetName(HWND window, const std::wstring& name) const;
    void SetDescription(HWND window, const std::wstring& description) const;

    /// What the text of this window changes to is to be spoken, each time after `Announce`.
    void MakeLiveRegion(HWND window) const;
    static void Announce(HWND window);

    /// Has to be called before the window goes.
    void Forget(HWND window) const;

  private:
    ComPointer<IAccPropServices> service_;
};

/// What all windows within a form share.
struct FormParts {
    FormParts(HWND theForm, Language theLanguage) : form(theForm), language(theLanguage), toolTips(theForm) {}

    HWND form;
    Language language;
    ToolTips toolTips;
    Accessibility accessibility;
    HWND refuge = nullptr;     ///< has the focus while the window that had it is disabled
    HWND displaced = nullptr;  ///< that window
};

/// A window of the system's within the form: it stands where the layout has it, in the layout's font. The
/// form, with which it goes, knows it by its number.
class ControlWindow {
  public:
    /// `windowClass` and `style` are the system's.
    ControlWindow(FormParts& parts, const ControlLayout& layout, const wchar_t* windowClass, DWORD style);
    ControlWindow(const ControlWindow&) = delete;
    ControlWindow& operator=(const ControlWindow&) = delete;
    ControlWindow(ControlWindow&&) = delete;
    ControlWindow& operator=(ControlWindow&&) = delete;
    ~ControlWindow();

    [[nodiscard]] HWND Handle() const { return handle_; }
    [[nodiscard]] const ControlLayout& Layout() const { return layout_; }
    [[nodiscard]] const FormParts& Parts() const { return parts_; }

    /// Takes the place and the font that it has on a screen of so many dots per inch. With `text`, the font
    /// is small enough for it to fit.
    void Scale(int dotsPerInch, const std::wstring& text = {});

    /// As `Scale` has set it last; 0 before.
    [[nodiscard]] int DotsPerInch() const { return dotsPerInch_; }

    /// From now on it has the palette's border and, if it can have the focus, room for the wider one of that.
    void DrawBorder(bool takesFocus);

    void SetText(const std::wstring& text) const;
    void Show(bool visible) const;

    /// The focus of a window that is disabled goes to the form's refuge until it is enabled again.
    void Enable(bool enabled);

    /// Tool tip and accessible description.
    void SetTip(const std::wstring& text);

  private:
    static LRESULT CALLBACK PaintBorder(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                        DWORD_PTR self);

    FormParts& parts_;
    const ControlLayout& layout_;
    HWND handle_ = nullptr;
    int dotsPerInch_ = 0;
    int borderLines_ = 0;
    OwnedFont font_;
    std::wstring tip_;
};

}  // namespace vento::desktop::win32
