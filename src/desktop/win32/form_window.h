#pragma once

#include "platform/windows/system.h"
// It needs that before it.
#include <shobjidl.h>

#include <deque>
#include <exception>
#include <optional>
#include <string>
#include <variant>

#include "desktop/win32/control_window.h"
#include "desktop/win32/views.h"
#include "desktop/win32/win32_desktop.h"
#include "panel/form_web.h"

namespace vento::desktop::win32 {

/// The window of a form, without anything in it.
class FormFrame {
  public:
    FormFrame(const FormPlace& place, const std::wstring& title, WNDPROC receive);
    FormFrame(const FormFrame&) = delete;
    FormFrame& operator=(const FormFrame&) = delete;
    FormFrame(FormFrame&&) = delete;
    FormFrame& operator=(FormFrame&&) = delete;
    ~FormFrame() { Destroy(); }

    [[nodiscard]] HWND Handle() const { return handle_; }
    void Destroy();

    /// What the whole window measures, in pixels, with its frame on a screen of so many dots per inch and its
    /// area laid out for `areaDotsPerInch`.
    [[nodiscard]] static SIZE SizeAt(int dotsPerInch, int areaDotsPerInch);

    /// The density that the area is laid out for: that of the screen or, where the form would be larger than
    /// what `monitor` has room for, the highest at which it fits.
    [[nodiscard]] static int FittingDensity(int dotsPerInch, HMONITOR monitor);

  private:
    HWND handle_ = nullptr;
};

/// FormWeb on the screen: it shows the form's controls and takes what the operator does to its handlers. The
/// form has been through `Form_Load` and outlives the window.
class FormWindow {
  public:
    FormWindow(FormWeb& form, Win32Desktop& desktop, const std::wstring& title);
    FormWindow(const FormWindow&) = delete;
    FormWindow& operator=(const FormWindow&) = delete;
    FormWindow(FormWindow&&) = delete;
    FormWindow& operator=(FormWindow&&) = delete;
    ~FormWindow();

    [[nodiscard]] HWND Handle() const { return frame_.Handle(); }

    void Show();

    /// What a handler threw; the message loop has been told to end. Nothing if all is well.
    [[nodiscard]] std::exception_ptr Failure() const { return failure_; }

  private:
    using View = std::variant<PictureView, ButtonView, LabelView, ItemsView, BarView>;

    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> HandleLook(UINT message, WPARAM wParam, LPARAM lParam);
    void MakeView(const ControlLayout& layout);
    [[nodiscard]] ControlWindow& WindowOf(ControlId id);
    void Command(int control, int notification);
    void Press(ControlId id);
    void Scale(int dotsPerInch);
    void MoveToScreen(int dotsPerInch, const RECT& place);
    void TakeColours();
    void DropFiles(HDROP drop);
    [[nodiscard]] bool Draw(const DRAWITEMSTRUCT& state);
    void Paint() const;
    void LookForTransmitterSoon() const;
    void LookForTransmitter();
    void ShowDetails();
    void RefreshSoon();
    void Refresh();
    void ShowOperation();
    void ShowProgress(std::optional<int> percent);
    void CallForAttention() const;
    void CopyStatus();

    FormWeb& form_;
    Win32Desktop& desktop_;
    int areaDotsPerInch_ = USER_DEFAULT_SCREEN_DPI;
    HWND focused_ = nullptr;  ///< the control that is to have the focus when the window gets it
    bool refreshIsDue_ = false;
    HWND pressed_ = nullptr;  ///< the button that began the latest operation
    std::exception_ptr failure_;
    Palette palette_;
    OwnedBrush background_;
    ComPointer<ITaskbarList3> taskbar_;
    FormFrame frame_;
    FormParts parts_;
    std::deque<View> views_;  ///< in tab order, as the layout has them
    Button hint_;             ///< the key that helps now, in the bar's place while there is no bar
    platform::Presence transmitter_ = platform::Presence::unknown;
};

}  // namespace vento::desktop::win32
