#pragma once

#include <array>
#include <exception>
#include <string>

#include "desktop/win32/control_window.h"
#include "desktop/win32/logo.h"
#include "desktop/win32/tool_tips.h"
#include "desktop/win32/views.h"
#include "desktop/win32/win32_desktop.h"
#include "panel/form_web.h"
#include "platform/windows/system.h"

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

    /// What the whole window measures, in pixels, on a screen of so many dots per inch.
    [[nodiscard]] static SIZE SizeAt(int dotsPerInch);

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
    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void Command(int control, int notification);
    void Press(ControlId id);
    void Scale(int dotsPerInch);
    void DropFiles(HDROP drop);
    [[nodiscard]] bool Draw(const DRAWITEMSTRUCT& state);
    void Paint() const;

    FormWeb& form_;
    Win32Desktop& desktop_;
    int dotsPerInch_ = USER_DEFAULT_SCREEN_DPI;
    HWND focused_ = nullptr;  ///< the control that is to have the focus when the window gets it
    std::exception_ptr failure_;
    FormFrame frame_;
    ToolTips toolTips_;
    ControlWindow image1_;
    Logo logo_;
    BarView progressBar1_;
    LabelView label1_;
    ButtonView command2_;
    ButtonView command3_;
    ButtonView command4_;
    std::array<ItemsView, kColumns> listView1_;
    ButtonView command6_;
    std::array<ControlWindow*, 10> windows_;
};

}  // namespace vento::desktop::win32
