#include "desktop/win32/control_window.h"

#include <cstdint>
#include <system_error>
#include <utility>

#include "desktop/win32/resource_ids.h"
#include "platform/windows/text.h"

namespace vento::desktop::win32 {

ControlWindow::ControlWindow(HWND form, ControlId id, const wchar_t* windowClass, DWORD style,
                             Language language)
    : layout_(LayoutOf(id)) {
    // The number that the form knows it by is, for historical reasons, passed as a menu.
    auto* const number = reinterpret_cast<HMENU>(std::intptr_t{kFirstControl} + static_cast<int>(id));
    handle_ = ::CreateWindowExW(0, windowClass, platform::Wide(layout_.name.In(language)).c_str(),
                                WS_CHILD | style, 0, 0, 0, 0, form, number, nullptr, nullptr);
    if (handle_ == nullptr) {
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CreateWindowEx");
    }
}

void ControlWindow::Scale(int dotsPerInch) {
    const RECT place = PlaceOf(layout_.place, dotsPerInch);
    ::SetWindowPos(handle_, nullptr, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    if (layout_.font.height == 0) return;
    OwnedFont old = std::exchange(font_, MakeFont(layout_.font, dotsPerInch));  // in use until the next line
    ::SendMessageW(handle_, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), TRUE);
}

void ControlWindow::SetText(const std::wstring& text) const {
    ::SetWindowTextW(handle_, text.c_str());
}

void ControlWindow::Show(bool visible) const {
    ::ShowWindow(handle_, visible ? SW_SHOWNA : SW_HIDE);
}

}  // namespace vento::desktop::win32
