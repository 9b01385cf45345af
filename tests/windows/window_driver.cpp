// Sees and uses the window of vento.exe from outside, as another program would: by the system's messages.
//   window_driver CLASS
//       prints the form and the dialogs with their controls as JSON; and what the controls of that class
//       hold, which these have to say
//   window_driver post WINDOW MESSAGE NUMBER NUMBER
//       doesn't wait for what the message leads to
//   window_driver write WINDOW TEXT
//       fills a field
//   window_driver listen
//       prints what a screen reader would speak of its own accord, a line of JSON each, until it is ended
//   window_driver lend WINDOW MESSAGE NUMBER BYTE...
//       sends a message with the address of these bytes: as its first argument too, if the number is 0
#include "platform/windows/system.h"
// It needs that before it.
#include <commctrl.h>

#include <array>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/windows/owned_handle.h"
#include "platform/windows/text.h"

namespace {

using vento::platform::Utf8;
using Json = nlohmann::json;

std::string ClassOf(HWND window) {
    std::array<wchar_t, 64> name{};
    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return Utf8(name.data());
}

std::string TextOf(HWND window) {
    std::array<wchar_t, 8192> text{};
    ::InternalGetWindowText(window, text.data(), static_cast<int>(text.size()));
    return Utf8(text.data());
}

Json ContentsOf(HWND control) {
    std::array<wchar_t, 1024> text{};
    const auto into = reinterpret_cast<LPARAM>(text.data());
    if (ClassOf(control) == "Edit") {
        ::SendMessageW(control, WM_GETTEXT, text.size(), into);
        return Utf8(text.data());
    }
    if (ClassOf(control) == "msctls_progress32")
        return {::SendMessageW(control, PBM_GETPOS, 0, 0), ::SendMessageW(control, PBM_GETRANGE, FALSE, 0)};
    Json items = Json::array();
    for (WPARAM i = 0; ::SendMessageW(control, LB_GETTEXT, i, into) != LB_ERR; ++i)
        items.push_back(Utf8(text.data()));
    return items;
}

/// As far as the system knows it without asking the program. The place is the one in its form, or on the
/// screen.
Json Described(HWND window, const std::string& asked) {
    RECT place{};
    ::GetWindowRect(window, &place);
    ::MapWindowPoints(nullptr, ::GetAncestor(window, GA_PARENT), reinterpret_cast<POINT*>(&place), 2);
    RECT area{};
    ::GetClientRect(window, &area);
    GUITHREADINFO thread{};
    thread.cbSize = sizeof thread;
    ::GetGUIThreadInfo(::GetWindowThreadProcessId(window, nullptr), &thread);
    return {{"handle", std::to_string(reinterpret_cast<std::uintptr_t>(window))},
            {"class", ClassOf(window)},
            {"text", TextOf(window)},
            {"visible", ::IsWindowVisible(window) != 0},
            {"enabled", ::IsWindowEnabled(window) != 0},
            {"focused", thread.hwndFocus == window},
            {"held", (thread.flags & (GUI_INMOVESIZE | GUI_INMENUMODE)) != 0},
            {"place", {place.left, place.top, place.right, place.bottom}},
            {"area", {area.right, area.bottom}},
            {"controls", Json::array()},
            {"holds", ClassOf(window) == asked ? ContentsOf(window) : Json()}};
}

BOOL CALLBACK Collect(HWND window, LPARAM windows) {
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

int TellState(const std::string& asked) {
    Json state = Json::array();
    std::vector<HWND> windows;
    ::EnumWindows(Collect, reinterpret_cast<LPARAM>(&windows));
    for (const HWND window : windows) {
        const bool isMeant = ClassOf(window) == "FormWeb" || ClassOf(window) == "#32770";
        if (!isMeant || ::IsWindowVisible(window) == 0) continue;
        state.push_back(Described(window, asked));
        std::vector<HWND> controls;
        ::EnumChildWindows(window, Collect, reinterpret_cast<LPARAM>(&controls));
        for (const HWND control : controls)
            state.back()["controls"].push_back(Described(control, asked));
    }
    std::cout << state;
    return EXIT_SUCCESS;
}

void CALLBACK TellChange(HWINEVENTHOOK, DWORD, HWND window, LONG, LONG, DWORD, DWORD) {
    std::cout << Json(TextOf(window)) << std::endl;
}

int Listen() {
    ::SetWinEventHook(EVENT_OBJECT_LIVEREGIONCHANGED, EVENT_OBJECT_LIVEREGIONCHANGED, nullptr, TellChange, 0,
                      0, WINEVENT_OUTOFCONTEXT);
    std::cout << Json("listening") << std::endl;
    MSG message{};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0)
        ::DispatchMessageW(&message);
    return EXIT_SUCCESS;
}

/// The address of these bytes in the memory of the window's program, which is gone with it.
LPARAM Lend(HWND window, const std::vector<char>& bytes) {
    DWORD id = 0;
    ::GetWindowThreadProcessId(window, &id);
    const vento::platform::OwnedHandle process(::OpenProcess(PROCESS_ALL_ACCESS, FALSE, id));
    void* const theirs =
        ::VirtualAllocEx(process.Get(), nullptr, bytes.size(), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    ::WriteProcessMemory(process.Get(), theirs, bytes.data(), bytes.size(), nullptr);
    return reinterpret_cast<LPARAM>(theirs);
}

}  // namespace

int wmain(int count, wchar_t** words) {
    const std::wstring command = words[1];
    if (command == L"listen") return Listen();
    if (count == 2) return TellState(Utf8(command));
    const auto window = reinterpret_cast<HWND>(std::stoull(words[2]));
    if (command == L"write")
        return ::SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(words[3])) == 0;
    std::vector<LPARAM> numbers;
    for (int i = 3; i < count; ++i)
        numbers.push_back(std::stoll(words[i]));
    const auto message = static_cast<UINT>(numbers[0]);
    const auto first = static_cast<WPARAM>(numbers[1]);
    if (command == L"post") return ::PostMessageW(window, message, first, numbers[2]) == 0;
    const LPARAM address = Lend(window, std::vector<char>(numbers.begin() + 2, numbers.end()));
    ::SendMessageW(window, message, first == 0 ? static_cast<WPARAM>(address) : first, address);
    return EXIT_SUCCESS;
}
