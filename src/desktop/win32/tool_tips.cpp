#include "desktop/win32/tool_tips.h"

#include <commctrl.h>

namespace vento::desktop::win32 {

namespace {

constexpr LPARAM kWidestTip = 400;  // pixels; a longer text is wrapped

}  // namespace

ToolTips::ToolTips(HWND form)
    : form_(form),
      tips_(::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                              WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, form, nullptr, nullptr,
                              nullptr)) {
    ::SendMessageW(tips_, TTM_SETMAXTIPWIDTH, 0, kWidestTip);
}

void ToolTips::SetText(HWND window, const std::wstring& text) const {
    std::wstring copy = text;
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = form_;
    tool.uId = reinterpret_cast<UINT_PTR>(window);
    tool.lpszText = copy.data();
    ::SendMessageW(tips_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    if (!text.empty()) ::SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace vento::desktop::win32
