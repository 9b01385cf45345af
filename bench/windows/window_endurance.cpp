// window_endurance PROGRAMME [RUNS]: as many operations in one window, begun by a press of its buttons, on a
// simulated machine; of ten eight program and two read.

#include "platform/windows/system.h"
// It needs that before it.
#include <commctrl.h>

#include <string>

#include "desktop/win32/form_window.h"
#include "desktop/win32/win32_desktop.h"
#include "endurance.h"
#include "panel/form_web.h"
#include "platform/native.h"
#include "platform/windows/text.h"
#include "simulator/simulated_hid_host.h"

namespace {

using namespace vento;

// Presses the next button whenever the window has come to rest.
struct Presser {
    FormWeb& form;
    desktop::win32::Win32Desktop& screen;
    HWND window;
    bench::Endurance endurance;
    bool pressed = false;

    void Tick() {
        if (screen.Operating()) return;
        const bool good = form.LatestOutcome() && form.LatestOutcome()->code == ResultCode::success;
        if (pressed && !endurance.Add(good)) return screen.EndProgram();
        pressed = true;
        const auto button =
            endurance.Done() % 10 < 2 ? desktop::ControlId::Command2 : desktop::ControlId::Command6_0;
        const int id = desktop::win32::kFirstControl + static_cast<int>(button);
        ::SendMessageW(::GetDlgItem(window, id), BM_CLICK, 0, 0);
    }
};

Presser* presser = nullptr;  // a timer without a window carries nothing along

void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) {
    presser->Tick();
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 2) return EXIT_FAILURE;
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const INITCOMMONCONTROLSEX classes{sizeof classes,
                                       ICC_STANDARD_CLASSES | ICC_PROGRESS_CLASS | ICC_BAR_CLASSES};
    ::InitCommonControlsEx(&classes);
    simulator::Scenario scenario;
    scenario.perReport = {};
    const auto clock = platform::MakeNativeClock();
    const auto files = platform::MakeNativeFiles();
    simulator::SimulatedHidHost host(scenario, *clock);
    desktop::win32::Win32Desktop desktop;
    FormWeb form({host, desktop, *files, *clock, platform::HidBackEnd::simulation});
    form.Form_Load(platform::Utf8(argv[1]), CommandLineKind::path);
    desktop::win32::FormWindow window(form, desktop, L"endurance");
    desktop.SetWindow(window.Handle());
    window.Show();
    Presser own{form, desktop, window.Handle(), bench::Endurance(argc > 2 ? std::stoul(argv[2]) : 10'000)};
    presser = &own;
    ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, Tick);
    desktop.Run();
    return own.endurance.Status();
}
