#include "desktop/win32/control_window.h"

#include <commctrl.h>

#include <array>
#include <cstdint>
#include <system_error>
#include <utility>

#include "platform/windows/text.h"

namespace vento::desktop::win32 {
namespace {

constexpr int kWidestTip = 6000;  // twips; a longer text is wrapped
constexpr int kTipMilliseconds = 30000;

constexpr GUID kLiveSetting{0xC12BCD8E, 0x2A8E, 0x4950, {0x8A, 0xE7, 0x36, 0x25, 0x11, 0x1D, 0x58, 0xEB}};
constexpr LONG kAssertive = 2;

constexpr auto kClient = static_cast<DWORD>(OBJID_CLIENT);

}  // namespace

ToolTips::ToolTips(HWND form)
    : form_(form),
      tips_(::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                              WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, form, nullptr, nullptr,
                              nullptr)) {
    ::SendMessageW(tips_, TTM_SETDELAYTIME, TTDT_AUTOPOP, kTipMilliseconds);
}

void ToolTips::SetText(HWND window, const std::wstring& text) const {
    std::wstring copy = text;
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = form_;
    tool.uId = reinterpret_cast<UINT_PTR>(window);
    // A tip that is up stays so while its text changes.
    const bool isKnown = ::SendMessageW(tips_, TTM_GETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&tool)) != 0;
    tool.lpszText = copy.data();
    const UINT change = text.empty() ? TTM_DELTOOLW : isKnown ? TTM_UPDATETIPTEXTW : TTM_ADDTOOLW;
    ::SendMessageW(tips_, change, 0, reinterpret_cast<LPARAM>(&tool));
}

void ToolTips::Scale(int dotsPerInch) const {
    ::SendMessageW(tips_, TTM_SETMAXTIPWIDTH, 0, PixelsFromTwips(kWidestTip, dotsPerInch));
}

Accessibility::Accessibility()
    : service_(MakeObject<IAccPropServices>(CLSID_AccPropServices, IID_IAccPropServices)) {}

void Accessibility::SetName(HWND window, const std::wstring& name) const {
    if (service_) service_->SetHwndPropStr(window, kClient, CHILDID_SELF, PROPID_ACC_NAME, name.c_str());
}

void Accessibility::SetDescription(HWND window, const std::wstring& description) const {
    if (!service_) return;
    service_->SetHwndPropStr(window, kClient, CHILDID_SELF, PROPID_ACC_DESCRIPTION, description.c_str());
}

void Accessibility::MakeLiveRegion(HWND window) const {
    VARIANT setting{};
    setting.vt = VT_I4;
    setting.lVal = kAssertive;
    if (service_) service_->SetHwndProp(window, kClient, CHILDID_SELF, kLiveSetting, setting);
}

void Accessibility::Announce(HWND window) {
    ::NotifyWinEvent(EVENT_OBJECT_LIVEREGIONCHANGED, window, OBJID_CLIENT, CHILDID_SELF);
}

void Accessibility::Forget(HWND window) const {
    const std::array properties{PROPID_ACC_NAME, PROPID_ACC_DESCRIPTION, kLiveSetting};
    if (!service_) return;
    service_->ClearHwndProps(window, kClient, CHILDID_SELF, properties.data(),
                             static_cast<int>(properties.size()));
}

ControlWindow::ControlWindow(FormParts& parts, const ControlLayout& layout, const wchar_t* windowClass,
                             DWORD style)
    : parts_(parts), layout_(layout) {
    const std::wstring name = platform::Wide(layout_.name.In(parts.language));
    const int id = kFirstControl + static_cast<int>(layout.id);
    // The number that the form knows it by is, for historical reasons, passed as a menu.
    handle_ = ::CreateWindowExW(0, windowClass, name.c_str(), WS_CHILD | style, 0, 0, 0, 0, parts.form,
                                reinterpret_cast<HMENU>(std::intptr_t{id}), nullptr, nullptr);
    if (handle_ == nullptr) {
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CreateWindowEx");
    }
    // Without one, screen readers take the text before a list or a bar for its name.
    if (!name.empty()) parts_.accessibility.SetName(handle_, name);
}

ControlWindow::~ControlWindow() {
    parts_.accessibility.Forget(handle_);
    ::DestroyWindow(handle_);
}

void ControlWindow::Scale(int dotsPerInch, const std::wstring& text) {
    dotsPerInch_ = dotsPerInch;
    const RECT place = PlaceOf(layout_.place, dotsPerInch);
    const SIZE size{place.right - place.left, place.bottom - place.top};
    ::SetWindowPos(handle_, nullptr, place.left, place.top, size.cx, size.cy,
                   SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    if (layout_.font.height == 0) return;
    OwnedFont font = text.empty() ? MakeFont(layout_.font, dotsPerInch)
                                  : MakeFittingFont(layout_.font, dotsPerInch, text, size);
    const OwnedFont old = std::exchange(font_, std::move(font));  // in use until the next line
    ::SendMessageW(handle_, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), TRUE);
}

void ControlWindow::DrawBorder(bool takesFocus) {
    borderLines_ = takesFocus ? kFocusLines : 1;
    ::SetWindowSubclass(handle_, PaintBorder, 0, reinterpret_cast<DWORD_PTR>(this));
}

// The borders of the system's themes are too faint, and an empty list shows its focus nowhere else.
LRESULT CALLBACK ControlWindow::PaintBorder(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                            DWORD_PTR self) {
    const auto& control = *reinterpret_cast<const ControlWindow*>(self);
    const int room = control.borderLines_ * LineWidth(control.dotsPerInch_);
    if (message == WM_NCCALCSIZE) {
        ::InflateRect(reinterpret_cast<RECT*>(lParam), -room, -room);  // it comes first in what that may be
        return 0;
    }
    if (message == WM_NCPAINT) {
        RECT frame{};
        ::GetWindowRect(window, &frame);
        ::OffsetRect(&frame, -frame.left, -frame.top);
        const Palette palette = Palette::Current();
        const bool focused = ::GetFocus() == window;
        const OwnedBrush ink(::CreateSolidBrush(focused ? palette.focused : palette.border));
        const OwnedBrush ground(::CreateSolidBrush(palette.background));
        const int lines = focused ? room : LineWidth(control.dotsPerInch_);
        auto* const canvas = ::GetWindowDC(window);
        for (int line = 0; line < room; ++line, ::InflateRect(&frame, -1, -1))
            ::FrameRect(canvas, &frame, line < lines ? ink.get() : ground.get());
        ::ReleaseDC(window, canvas);
        return 0;
    }
    const LRESULT result = ::DefSubclassProc(window, message, wParam, lParam);
    if (message == WM_SETFOCUS || message == WM_KILLFOCUS)
        ::RedrawWindow(window, nullptr, nullptr, RDW_FRAME | RDW_INVALIDATE);
    return result;
}

void ControlWindow::SetText(const std::wstring& text) const {
    ::SetWindowTextW(handle_, text.c_str());
}

void ControlWindow::Show(bool visible) const {
    ::ShowWindow(handle_, visible ? SW_SHOWNA : SW_HIDE);
}

void ControlWindow::Enable(bool enabled) {
    if ((::IsWindowEnabled(handle_) != 0) == enabled) return;
    if (!enabled && ::GetFocus() == handle_) {
        if (parts_.displaced == nullptr) parts_.displaced = handle_;
        ::SetFocus(parts_.refuge);
    }
    ::EnableWindow(handle_, enabled ? TRUE : FALSE);
    if (!enabled || parts_.displaced != handle_) return;
    parts_.displaced = nullptr;
    if (::GetFocus() == parts_.refuge) ::SetFocus(handle_);
}

void ControlWindow::SetTip(const std::wstring& text) {
    if (text == tip_) return;
    tip_ = text;
    parts_.toolTips.SetText(handle_, text);
    parts_.accessibility.SetDescription(handle_, text);
}

}  // namespace vento::desktop::win32
