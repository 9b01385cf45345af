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
//   window_driver contrast WINDOW
//       has its program told that high contrast is on, white and green on black
//   window_driver lend WINDOW MESSAGE NUMBER BYTE...
//       sends a message with the address of these bytes: as its first argument too, if the number is 0
#include "platform/windows/system.h"
// It needs that before it.
#include <commctrl.h>
#include <psapi.h>

#include <array>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
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
    POINT corner{};
    ::ClientToScreen(window, &corner);
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
            {"corner", {corner.x, corner.y}},
            {"controls", Json::array()},
            {"holds", ClassOf(window) == asked ? ContentsOf(window) : Json()}};
}

BOOL CALLBACK Collect(HWND window, LPARAM windows) {
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

void TellState(const std::string& asked) {
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
}

void CALLBACK TellChange(HWINEVENTHOOK, DWORD, HWND window, LONG, LONG, DWORD, DWORD) {
    std::cout << (ClassOf(window) == "Edit" ? ContentsOf(window) : Json(TextOf(window))) << std::endl;
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

HANDLE OpenProcessOf(HWND window) {
    DWORD id = 0;
    ::GetWindowThreadProcessId(window, &id);
    return ::OpenProcess(PROCESS_ALL_ACCESS, FALSE, id);
}

/// The address of these bytes in the memory of the window's program, which is gone with it.
LPARAM Lend(HWND window, const std::vector<char>& bytes) {
    const vento::platform::OwnedHandle process(OpenProcessOf(window));
    void* const theirs = ::VirtualAllocEx(process.Get(), nullptr, bytes.size(), MEM_RESERVE | MEM_COMMIT,
                                          PAGE_EXECUTE_READWRITE);
    ::WriteProcessMemory(process.Get(), theirs, bytes.data(), bytes.size(), nullptr);
    return reinterpret_cast<LPARAM>(theirs);
}

/// The import of a function of the system's in the program of a window.
char* ImportOf(HANDLE process, LPARAM function) {
    HMODULE program = nullptr;
    DWORD size = 0;
    ::K32EnumProcessModules(process, &program, sizeof program, &size);
    auto* const base = reinterpret_cast<char*>(program);
    const auto read = [&]<class Part>(Part part, std::size_t offset) {
        ::ReadProcessMemory(process, base + offset, &part, sizeof part, nullptr);
        return part;
    };
    const auto headers =
        read(IMAGE_NT_HEADERS64{}, static_cast<std::size_t>(read(IMAGE_DOS_HEADER{}, 0).e_lfanew));
    std::size_t at = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (IMAGE_IMPORT_DESCRIPTOR library{}; (library = read(library, at)).Name != 0; at += sizeof library) {
        std::size_t slot = library.FirstThunk;
        for (LPARAM found = 0; (found = read(found, slot)) != 0; slot += sizeof found) {
            if (found == function) return base + slot;
        }
    }
    throw std::out_of_range("The program does not import it.");
}

/// From now on the program of the window calls this code in place of a function of the system's.
void Replace(HWND window, LPARAM function, const std::vector<char>& code) {
    const vento::platform::OwnedHandle process(OpenProcessOf(window));
    char* const import = ImportOf(process.Get(), function);
    const LPARAM address = Lend(window, code);
    DWORD protection = 0;
    ::VirtualProtectEx(process.Get(), import, sizeof address, PAGE_READWRITE, &protection);
    ::WriteProcessMemory(process.Get(), import, &address, sizeof address, nullptr);
}

/// What Wine does not have, for the program of the window alone.
void AskForHighContrast(HWND window) {
    std::array<COLORREF, COLOR_MENUBAR + 1> colours{};
    colours.at(COLOR_WINDOWTEXT) = colours.at(COLOR_BTNTEXT) = RGB(255, 255, 255);
    colours.at(COLOR_GRAYTEXT) = RGB(63, 242, 63);
    colours.at(COLOR_HIGHLIGHT) = RGB(26, 235, 255);
    const auto bytes = std::as_bytes(std::span(colours));
    const auto* const first = reinterpret_cast<const char*>(bytes.data());
    const auto table =
        static_cast<std::uint64_t>(Lend(window, std::vector<char>(first, first + bytes.size())));
    std::vector<char> look{0x48, '\xB8', 0, 0, 0, 0, 0, 0, 0, 0};  // mov rax, table
    std::memcpy(look.data() + 2, &table, sizeof table);
    look.insert(look.end(), {'\x8B', 0x04, '\x88', '\xC3'});  // mov eax, [rax + 4 * rcx]; ret
    Replace(window, reinterpret_cast<LPARAM>(&::GetSysColor), look);
    // mov dword ptr [r8 + 4], HCF_HIGHCONTRASTON; mov eax, TRUE; ret
    Replace(window, reinterpret_cast<LPARAM>(&::SystemParametersInfoW),
            {0x41, '\xC7', 0x40, 4, 1, 0, 0, 0, '\xB8', 1, 0, 0, 0, '\xC3'});
    ::SendMessageW(window, WM_SYSCOLORCHANGE, 0, 0);
}

}  // namespace

int wmain(int count, wchar_t** words) {
    const std::wstring command = words[1];
    if (command == L"listen") return Listen();
    std::vector<LPARAM> numbers;
    for (int i = 2; i < count && command != L"write"; ++i)
        numbers.push_back(std::stoll(words[i]));
    if (count == 2) {
        TellState(Utf8(command));
    } else {
        const auto window = reinterpret_cast<HWND>(std::stoull(words[2]));
        if (command == L"write")
            return ::SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(words[3])) == 0;
        if (command == L"contrast") return AskForHighContrast(window), EXIT_SUCCESS;
        const auto message = static_cast<UINT>(numbers[1]);
        const auto first = static_cast<WPARAM>(numbers[2]);
        if (command == L"post") return ::PostMessageW(window, message, first, numbers[3]) == 0;
        const LPARAM address = Lend(window, std::vector<char>(numbers.begin() + 3, numbers.end()));
        ::SendMessageW(window, message, first == 0 ? static_cast<WPARAM>(address) : first, address);
    }
    return EXIT_SUCCESS;
}
