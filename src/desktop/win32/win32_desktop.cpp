#include "desktop/win32/win32_desktop.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "desktop/layout.h"
#include "panel/form_web.h"
#include "platform/native.h"
#include "platform/windows/text.h"

namespace vento::desktop::win32 {
namespace {

constexpr LPARAM kKeyWasDown = LPARAM{1} << 30;

bool IsRepeatedEnter(const MSG& message) {
    return message.message == WM_KEYDOWN && message.wParam == VK_RETURN &&
           (message.lParam & kKeyWasDown) != 0;
}

/// A "description|pattern|" run as the system wants it: each part ended by a NUL, the whole by one more.
std::wstring NameFilters(std::string_view filter) {
    std::wstring filters = platform::Wide(filter);
    std::ranges::replace(filters, L'|', L'\0');
    filters += L'\0';
    return filters;
}

}  // namespace

void Win32Desktop::Run() {
    MSG message{};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0)
        Handle(message);
}

void Win32Desktop::Yield() {
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        if (message.message == WM_QUIT) {  // for Run to see
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        Handle(message);
    }
}

void Win32Desktop::Handle(MSG& message) const {
    if (IsRepeatedEnter(message)) return;  // a key held down presses once
    if (window_ != nullptr && ::IsDialogMessageW(window_, &message) != 0) return;
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
}

void Win32Desktop::ShowMessage(std::string_view text, std::string_view detail) {
    const std::wstring title = platform::Wide(FormWeb::kTitle);
    const std::wstring wideText = platform::Wide(text);
    const std::wstring wideDetail = platform::Wide(detail);
    TASKDIALOGCONFIG box{};
    box.cbSize = sizeof box;
    box.hwndParent = window_;
    box.dwFlags = TDF_ALLOW_DIALOG_CANCELLATION | TDF_POSITION_RELATIVE_TO_WINDOW;
    box.dwCommonButtons = TDCBF_OK_BUTTON;
    box.pszWindowTitle = title.c_str();
    box.pszMainIcon = TD_WARNING_ICON;
    box.pszMainInstruction = wideText.c_str();
    box.pszContent = wideDetail.c_str();
    ::TaskDialogIndirect(&box, nullptr, nullptr, nullptr);
}

std::optional<std::string> Win32Desktop::ChooseFile(std::string_view title, std::string_view filter) {
    constexpr std::size_t kLongestPath = 32768;
    std::wstring path = latestFile_;
    path.resize(kLongestPath);
    const std::wstring wideTitle = platform::Wide(title);
    const std::wstring filters = NameFilters(filter);
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = window_;
    dialog.lpstrFilter = filters.c_str();
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrTitle = wideTitle.c_str();
    dialog.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (::GetOpenFileNameW(&dialog) == 0) return std::nullopt;
    latestFile_ = path.substr(0, path.find(L'\0'));
    return platform::Utf8(latestFile_);
}

platform::TwipSize Win32Desktop::ScreenSize() const {
    const int dotsPerInch = static_cast<int>(::GetDpiForSystem());
    return {TwipsFromPixels(::GetSystemMetrics(SM_CXSCREEN), dotsPerInch),
            TwipsFromPixels(::GetSystemMetrics(SM_CYSCREEN), dotsPerInch)};
}

std::optional<std::string> Win32Desktop::LanguageAbbreviation() {
    return platform::NativeLanguageAbbreviation();
}

void Win32Desktop::EndProgram() {
    ::ShowWindow(window_, SW_HIDE);
    ::PostQuitMessage(EXIT_SUCCESS);
}

}  // namespace vento::desktop::win32
