#include "desktop/win32/win32_desktop.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "desktop/layout.h"
#include "desktop/win32/look.h"
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

bool IsHelp(const MSG& message) {
    return message.message == WM_KEYDOWN && message.wParam == VK_F1;
}

bool IsCopy(const MSG& message) {
    return message.message == WM_KEYDOWN && message.wParam == 'C' && ::GetKeyState(VK_CONTROL) < 0;
}

/// A "description|pattern|" run as the system wants it: each part ended by a NUL, the whole by one more.
std::wstring NameFilters(std::string_view filter) {
    std::wstring filters = platform::Wide(filter);
    std::ranges::replace(filters, L'|', L'\0');
    filters += L'\0';
    return filters;
}

/// What the system shows of the program while a shutdown waits for it. The window answers that it does.
class ShutdownBlock final : public platform::SleepInhibitor {
  public:
    ShutdownBlock(HWND window, bool& blocked, std::string_view reason)
        : window_(window), blocked_(blocked), awake_(platform::InhibitNativeSleep(reason)) {
        ::ShutdownBlockReasonCreate(window_, platform::Wide(reason).c_str());
        blocked_ = true;
    }
    ShutdownBlock(const ShutdownBlock&) = delete;
    ShutdownBlock& operator=(const ShutdownBlock&) = delete;
    ShutdownBlock(ShutdownBlock&&) = delete;
    ShutdownBlock& operator=(ShutdownBlock&&) = delete;
    ~ShutdownBlock() override {
        blocked_ = false;
        ::ShutdownBlockReasonDestroy(window_);
    }

  private:
    HWND window_;
    bool& blocked_;
    std::unique_ptr<platform::SleepInhibitor> awake_;
};

}  // namespace

void Win32Desktop::Run() {
    MSG message{};
    while (!over_ || operation_.Running()) {
        if (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            if (message.message == WM_QUIT) {
                EndProgram();
            } else {
                Handle(message);
            }
        } else if (operation_.Running()) {
            operation_.Resume();
        } else {
            ::WaitMessage();
        }
    }
    while (::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != 0) {
        // would end the boxes to come
    }
}

void Win32Desktop::Yield() {
    operation_.Yield();
}

// Menus, held title bars and the like have loops of their own, which dispatch this too.
void CALLBACK Win32Desktop::Tick(HWND, UINT, UINT_PTR self, DWORD) {
    reinterpret_cast<Win32Desktop*>(self)->operation_.ResumeForAWhile();
}

void Win32Desktop::OperationChanged() const {
    const auto id = reinterpret_cast<UINT_PTR>(this);
    if (operation_.Running()) {
        ::SetTimer(window_, id, USER_TIMER_MINIMUM, Tick);
    } else {
        ::KillTimer(window_, id);
    }
    if (observer_) observer_();
}

// A letter presses a button only with Alt. Without it, it would too if it came to the system's dialog keys.
void Win32Desktop::Handle(MSG& message) const {
    if (IsRepeatedEnter(message)) return;  // a key held down presses once
    if (IsCopy(message)) ::SendMessageW(window_, WM_COPY, 0, 0);
    if (IsHelp(message)) return static_cast<void>(::SendMessageW(window_, WM_HELP, 0, 0));
    const bool isLetter = message.message == WM_CHAR;
    if (window_ != nullptr && !isLetter && ::IsDialogMessageW(window_, &message) != 0) return;
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
}

void Win32Desktop::ShowMessage(std::string_view text, std::string_view detail) {
    operation_.DoInLoop([&] { ShowBox(window_, text, detail); });
}

void ShowBox(HWND owner, std::string_view text, std::string_view detail) {
    const std::wstring title = platform::Wide(FormWeb::kTitle);
    const std::wstring wideText = ShownLines(text);
    const std::wstring wideDetail = ShownLines(detail);
    TASKDIALOGCONFIG box{};
    box.cbSize = sizeof box;
    box.hwndParent = owner;
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

std::unique_ptr<platform::SleepInhibitor> Win32Desktop::InhibitSleep(std::string_view reason) {
    return std::make_unique<ShutdownBlock>(window_, shutdownBlocked_, reason);
}

void Win32Desktop::EndProgram() {
    if (std::exchange(over_, true)) return;
    operation_.Abandon();
    ::ShowWindow(window_, SW_HIDE);
    ::SendMessageW(window_, WM_CANCELMODE, 0, 0);  // ends an open menu and a held title bar
    ::PostQuitMessage(EXIT_SUCCESS);               // ends boxes and dialogs
}

}  // namespace vento::desktop::win32
