#include "windows/driven_window.h"

#include <windows.h>
// It needs that before it.
#include <commctrl.h>
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "platform/windows/files.h"
#include "platform/windows/language.h"
#include "platform/windows/text.h"

namespace vento::test {

using platform::Utf8;
using platform::Wide;

namespace {

constexpr DWORD kTimeToEnd = 5'000;

std::wstring ClassOf(HWND window) {
    std::array<wchar_t, 64> name{};
    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return name.data();
}

template <class Visit>
void ForEachChild(HWND parent, Visit visit) {
    ::EnumChildWindows(
        parent,
        [](HWND child, LPARAM argument) -> BOOL {
            (*reinterpret_cast<Visit*>(argument))(child);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&visit));
}

void SetRegion(const std::string& language) {
    const std::wstring value = Wide(language);
    ::RegSetKeyValueW(HKEY_CURRENT_USER, L"Control Panel\\International", L"sLanguage", REG_SZ, value.c_str(),
                      static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

}  // namespace

std::string TextOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(::SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    const LRESULT count =
        ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return Utf8(text.substr(0, static_cast<std::size_t>(count)));
}

std::string Caption(HWND control) {
    std::string text = TextOf(control);
    std::erase(text, '&');
    return text;
}

RECT PlaceOf(HWND control) {
    RECT place{};
    ::GetWindowRect(control, &place);
    ::MapWindowPoints(nullptr, ::GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

DrivenWindow::DrivenWindow(const std::string& commandLine, const std::string& simulate) {
    const std::filesystem::path program = platform::WindowsFiles().ProgramFolder() / "vento.exe";
    ::SetEnvironmentVariableW(L"VENTO_SIMULATE", Wide(simulate).c_str());
    std::wstring whole = L"\"" + program.native() + L"\" " + Wide(commandLine);
    STARTUPINFOW how{};
    how.cb = sizeof how;
    PROCESS_INFORMATION started{};
    if (::CreateProcessW(nullptr, whole.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &how,
                         &started) == 0) {
        throw std::runtime_error("vento.exe does not start");
    }
    const platform::OwnedHandle thread(started.hThread);
    process_ = platform::OwnedHandle(started.hProcess);
    processId_ = started.dwProcessId;
    form_ = Eventually([this]() -> HWND {
        if (::WaitForSingleObject(process_.Get(), 0) == WAIT_OBJECT_0)
            throw std::runtime_error("vento.exe has ended");
        for (const HWND each : Windows()) {
            if (ClassOf(each) == L"FormWeb" || ClassOf(each) == L"#32770") return each;
        }
        return nullptr;
    });
    if (ClassOf(form_) != L"FormWeb") form_ = nullptr;
}

DrivenWindow::~DrivenWindow() {
    ::TerminateProcess(process_.Get(), EXIT_FAILURE);
    ::WaitForSingleObject(process_.Get(), kTimeToEnd);
}

std::vector<HWND> DrivenWindow::Windows() const {
    struct Search {
        DWORD process;
        std::vector<HWND> found;
    } search{processId_, {}};
    ::EnumWindows(
        [](HWND window, LPARAM argument) -> BOOL {
            auto& mine = *reinterpret_cast<Search*>(argument);
            DWORD process = 0;
            ::GetWindowThreadProcessId(window, &process);
            if (process == mine.process && ::IsWindowVisible(window) != 0) mine.found.push_back(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND DrivenWindow::Control(const wchar_t* windowClass, int index) const {
    HWND found = nullptr;
    ForEachChild(form_, [&](HWND child) {
        if (ClassOf(child) == windowClass && index-- == 0) found = child;
    });
    return found;
}

std::vector<std::string> DrivenWindow::Buttons() const {
    std::vector<std::string> captions;
    ForEachChild(form_, [&](HWND child) {
        if (ClassOf(child) == L"Button" && ::IsWindowVisible(child) != 0) captions.push_back(Caption(child));
    });
    return captions;
}

HWND DrivenWindow::Button(const std::string& caption) const {
    HWND found = nullptr;
    ForEachChild(form_, [&](HWND child) {
        const bool isIt = ClassOf(child) == L"Button" && Caption(child) == caption;
        if (isIt && ::IsWindowVisible(child) != 0) found = child;
    });
    return found;
}

void DrivenWindow::Press(const std::string& caption) const {
    ::PostMessageW(Eventually([&] { return Button(caption); }), BM_CLICK, 0, 0);
}

std::string DrivenWindow::Status() const {
    return TextOf(Control(WC_STATICW, 1));
}

bool DrivenWindow::AwaitStatus(const std::string& part) const {
    return Eventually([&] { return Status().find(part) != std::string::npos; });
}

std::vector<std::string> DrivenWindow::Items() const {
    std::vector<std::string> items;
    for (int column = 0; column < 3; ++column) {
        const HWND list = Control(WC_LISTBOXW, column);
        std::array<wchar_t, 256> text{};
        if (::SendMessageW(list, LB_GETCOUNT, 0, 0) > 0) {
            ::SendMessageW(list, LB_GETTEXT, 0, reinterpret_cast<LPARAM>(text.data()));
        }
        items.push_back(Utf8(text.data()));
    }
    return items;
}

std::optional<int> DrivenWindow::Bar() const {
    const HWND bar = Control(PROGRESS_CLASSW, 0);
    if (::IsWindowVisible(bar) == 0) return std::nullopt;
    return static_cast<int>(::SendMessageW(bar, PBM_GETPOS, 0, 0));
}

HWND DrivenWindow::Focus() const {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    ::GetGUIThreadInfo(::GetWindowThreadProcessId(form_, nullptr), &info);
    return info.hwndFocus;
}

void DrivenWindow::Type(WPARAM key, bool alt) const {
    constexpr LPARAM altIsDown = LPARAM{1} << 29;
    const HWND focus = Eventually([this] { return Focus(); });
    if (alt) {
        ::PostMessageW(focus, WM_SYSCHAR, key, altIsDown);
        return;
    }
    ::PostMessageW(focus, WM_KEYDOWN, key, 1);
    ::PostMessageW(focus, WM_KEYUP, key, LPARAM{1} | (LPARAM{3} << 30));
}

void* DrivenWindow::Lend(const void* bytes, std::size_t size) const {
    void* const theirs =
        ::VirtualAllocEx(process_.Get(), nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    ::WriteProcessMemory(process_.Get(), theirs, bytes, size, nullptr);
    return theirs;
}

void DrivenWindow::Drop(const std::wstring& path) const {
    std::vector<wchar_t> record(sizeof(DROPFILES) / sizeof(wchar_t) + path.size() + 2);
    DROPFILES head{};
    head.pFiles = sizeof head;
    head.fWide = TRUE;
    std::memcpy(record.data(), &head, sizeof head);
    path.copy(record.data() + sizeof head / sizeof(wchar_t), path.size());
    void* const drop = Lend(record.data(), record.size() * sizeof(wchar_t));
    ::PostMessageW(form_, WM_DROPFILES, reinterpret_cast<WPARAM>(drop), 0);
}

void DrivenWindow::ChangeDensity(int dotsPerInch) const {
    constexpr RECT suggestion{10, 10, 400, 400};
    ::SendMessageW(form_, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(dotsPerInch, dotsPerInch)),
                   reinterpret_cast<LPARAM>(Lend(&suggestion, sizeof suggestion)));
}

HWND DrivenWindow::Dialog() const {
    return Eventually([this]() -> HWND {
        for (const HWND each : Windows()) {
            if (ClassOf(each) == L"#32770") return each;
        }
        return nullptr;
    });
}

std::string DrivenWindow::TextsIn(HWND dialog) const {
    std::string texts;
    ForEachChild(dialog, [&](HWND child) {
        if (ClassOf(child) == L"Static") texts += TextOf(child) + "\n";
    });
    return texts;
}

void DrivenWindow::Answer(HWND dialog) const {
    HWND button = nullptr;
    ForEachChild(dialog, [&](HWND child) {
        if (button == nullptr && ClassOf(child) == L"Button" && ::IsWindowVisible(child) != 0) button = child;
    });
    ::PostMessageW(button, BM_CLICK, 0, 0);
    Eventually([&] { return ::IsWindow(dialog) == 0; });
}

std::string DrivenWindow::Choose(HWND dialog, const std::string& file) const {
    const auto child = [dialog](auto wanted) {
        return Eventually([&]() -> HWND {
            HWND found = nullptr;
            ForEachChild(dialog, [&](HWND each) {
                if (::IsWindowVisible(each) != 0 && wanted(each)) found = each;
            });
            return found;
        });
    };
    const HWND field = child([](HWND each) { return ClassOf(each) == WC_EDITW; });
    const HWND button = child([&](HWND each) {
        return ClassOf(each) == WC_BUTTONW && ::GetDlgCtrlID(each) == (file.empty() ? IDCANCEL : IDOK);
    });
    std::string before = TextOf(field);
    ::SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(platform::Wide(file).c_str()));
    ::PostMessageW(button, BM_CLICK, 0, 0);
    Eventually([&] { return ::IsWindow(dialog) == 0; });
    return before;
}

std::optional<DWORD> DrivenWindow::Ends() const {
    DWORD status = 0;
    if (::WaitForSingleObject(process_.Get(), kTimeToEnd) != WAIT_OBJECT_0) return std::nullopt;
    ::GetExitCodeProcess(process_.Get(), &status);
    return status;
}

void DrivenWindow::TakePicture(const std::string& name) const {
    const wchar_t* const folder = ::_wgetenv(L"VENTO_PICTURES");
    if (folder == nullptr) return;
    ::Sleep(100);  // for what has just changed to be painted
    RECT place{};
    ::GetWindowRect(form_, &place);
    const std::filesystem::path wanted = std::filesystem::path(folder) / (name + ".wanted");
    std::ofstream(wanted) << place.right - place.left << 'x' << place.bottom - place.top << '+' << place.left
                          << '+' << place.top << '\n';
    Eventually([&] { return !std::filesystem::exists(wanted); });
}

RegionSetTo::RegionSetTo(const std::string& language) : before_(platform::RegionLanguage().value_or("ENU")) {
    SetRegion(language);
}

RegionSetTo::~RegionSetTo() {
    SetRegion(before_);
}

}  // namespace vento::test
