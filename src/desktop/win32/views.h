#pragma once

#include "controls/controls.h"
#include "desktop/layout.h"
#include "desktop/win32/control_window.h"
#include "desktop/win32/tool_tips.h"
#include "platform/windows/system.h"
#include "text/language.h"

/// What shows a control of the panel on the screen. A view follows its control, which outlives it, and keeps
/// nothing of its own. Views stay where they were made: their controls know them.
namespace vento::desktop::win32 {

/// A button of the system's. One whose background is not the system's grey is drawn by us and behaves like
/// the others.
class ButtonView {
  public:
    ButtonView(HWND form, Button& button, ControlId id, Language language);

    [[nodiscard]] ControlWindow& Window() { return window_; }

    /// Draws the button, if it is one that is drawn by us.
    void Draw(const DRAWITEMSTRUCT& state) const;

  private:
    void Follow();
    static LRESULT CALLBACK FollowMouse(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                        DWORD_PTR self);

    Button& button_;
    Language language_;
    ControlWindow window_;
    bool mouseIsOver_ = false;
    bool focusWasTaken_ = false;
};

/// A status line: as many lines as fit, wrapped.
class LabelView {
  public:
    LabelView(HWND form, Label& label, ControlId id, Language language);

    [[nodiscard]] ControlWindow& Window() { return window_; }

  private:
    void Follow();

    Label& label_;
    ControlWindow window_;
};

/// A list. An item that does not fit is cut short; the tool tip has it whole.
class ItemsView {
  public:
    ItemsView(HWND form, ListView& list, ControlId id, Language language, ToolTips& toolTips);

    [[nodiscard]] ControlWindow& Window() { return window_; }

    /// Has each item fill the list, which has been scaled.
    void FitItems() const;

    void Draw(const DRAWITEMSTRUCT& state) const;

  private:
    void Follow();
    [[nodiscard]] std::wstring ItemText(UINT index) const;

    ListView& list_;
    ControlWindow window_;
    ToolTips& toolTips_;
};

class BarView {
  public:
    BarView(HWND form, ProgressBar& bar, ControlId id, Language language);

    [[nodiscard]] ControlWindow& Window() { return window_; }

  private:
    void Follow();

    ProgressBar& bar_;
    ControlWindow window_;
};

}  // namespace vento::desktop::win32
