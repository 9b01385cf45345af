#pragma once

#include <functional>
#include <optional>
#include <string>

#include "controls/controls.h"
#include "desktop/layout.h"
#include "desktop/win32/control_window.h"
#include "platform/windows/system.h"

/// What shows a control of the panel on the screen. A view follows its control, which outlives it, and keeps
/// nothing of the control's own. Views stay where they were made: their controls know them.
namespace vento::desktop::win32 {

/// The logo.
class PictureView {
  public:
    PictureView(FormParts& parts, const ControlLayout& layout);

    [[nodiscard]] ControlWindow& Window() { return window_; }
    void Scale(int dotsPerInch) { window_.Scale(dotsPerInch); }
    void Draw(const DRAWITEMSTRUCT& state) { logo_.Draw(state.hDC, state.rcItem); }

  private:
    ControlWindow window_;
    Logo logo_;
};

/// A button of the system's, drawn here: the system's own border is too faint on white.
class ButtonView {
  public:
    ButtonView(FormParts& parts, const ControlLayout& layout, Button& button);

    [[nodiscard]] ControlWindow& Window() { return window_; }
    void Scale(int dotsPerInch);
    void Draw(const DRAWITEMSTRUCT& state) const;

    /// A dimmed button can't be pressed, whatever its control says.
    void SetDimmed(bool dimmed);

  private:
    void Follow();
    [[nodiscard]] std::wstring Caption() const;
    static LRESULT CALLBACK FollowMouse(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                        DWORD_PTR self);

    Button& button_;
    ControlWindow window_;
    bool mouseIsOver_ = false;
    bool dimmed_ = false;
};

/// A status line, wrapped, in type that lets it fit. Screen readers speak each text; it can be selected by
/// mouse.
class LabelView {
  public:
    LabelView(FormParts& parts, const ControlLayout& layout, Label& label);

    [[nodiscard]] ControlWindow& Window() { return window_; }
    void Scale(int dotsPerInch);

    /// What is selected; empty for nothing.
    [[nodiscard]] std::wstring Selection() const;

  private:
    void Follow();
    static LRESULT CALLBACK LeaveKeys(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                      DWORD_PTR);

    Label& label_;
    ControlWindow window_;
    std::wstring shown_;
};

/// A list. An item that does not fit is cut short; the tool tip has it whole.
class ItemsView {
  public:
    ItemsView(FormParts& parts, const ControlLayout& layout, ListView& list);

    [[nodiscard]] ControlWindow& Window() { return window_; }
    void Scale(int dotsPerInch);
    void Draw(const DRAWITEMSTRUCT& state) const;

  private:
    void Follow();
    [[nodiscard]] std::wstring ItemText(UINT index) const;

    ListView& list_;
    ControlWindow window_;
};

class BarView {
  public:
    /// `progress` is called with each percent that the bar shows, and with nothing when it is hidden.
    BarView(FormParts& parts, const ControlLayout& layout, ProgressBar& bar,
            std::function<void(std::optional<int>)> progress);

    [[nodiscard]] ControlWindow& Window() { return window_; }
    void Scale(int dotsPerInch) { window_.Scale(dotsPerInch); }

    /// Those of the palette, which may have changed.
    void TakeColours();

  private:
    void Follow();

    ProgressBar& bar_;
    ControlWindow window_;
    std::function<void(std::optional<int>)> progress_;
    std::optional<int> shownPercent_;
};

}  // namespace vento::desktop::win32
