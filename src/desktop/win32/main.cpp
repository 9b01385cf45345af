// vento [FILE]: the window.

#include "platform/windows/system.h"
// It needs that before it.
#include <commctrl.h>

#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "desktop/session.h"
#include "desktop/win32/form_window.h"
#include "desktop/win32/win32_desktop.h"
#include "panel/form_web.h"
#include "platform/windows/text.h"

namespace {

using namespace vento;
using namespace vento::desktop;

/// What the system's own dialogs and controls want to have been called before them.
class SystemParts {
  public:
    SystemParts() : initialised_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        const INITCOMMONCONTROLSEX classes{sizeof classes,
                                           ICC_STANDARD_CLASSES | ICC_PROGRESS_CLASS | ICC_BAR_CLASSES};
        ::InitCommonControlsEx(&classes);
    }
    SystemParts(const SystemParts&) = delete;
    SystemParts& operator=(const SystemParts&) = delete;
    SystemParts(SystemParts&&) = delete;
    SystemParts& operator=(SystemParts&&) = delete;
    ~SystemParts() {
        if (initialised_) ::CoUninitialize();
    }

  private:
    bool initialised_;
};

std::string Environment(const wchar_t* variable) {
    const wchar_t* const value = ::_wgetenv(variable);
    return value == nullptr ? std::string() : platform::Utf8(value);
}

/// Centred by its whole size, title bar included.
FormPlace WholeForm() {
    const int dotsPerInch = static_cast<int>(::GetDpiForSystem());
    HMONITOR const monitor = ::MonitorFromPoint(POINT{}, MONITOR_DEFAULTTOPRIMARY);
    const int density = win32::FormFrame::FittingDensity(dotsPerInch, monitor);
    const SIZE size = win32::FormFrame::SizeAt(dotsPerInch, density);
    return {0, 0, TwipsFromPixels(size.cx, dotsPerInch), TwipsFromPixels(size.cy, dotsPerInch)};
}

void RunForm(Session& session, win32::Win32Desktop& desktop, const std::string& commandLine) {
    FormWeb form(session.MachineWith(desktop));
    form.Place = WholeForm();
    form.Form_Load(commandLine);
    win32::FormWindow window(form, desktop, platform::Wide(session.Title(form.PanelLanguage())));
    desktop.SetWindow(window.Handle());
    window.Show();
    desktop.Run();
    desktop.SetWindow(nullptr);
    if (window.Failure()) std::rethrow_exception(window.Failure());
}

/// The exit status.
int RunProgram(const std::string& commandLine) {
    win32::Win32Desktop desktop;
    const std::string simulate = Environment(L"VENTO_SIMULATE");
    std::optional<Session> session;
    try {
        session.emplace(simulate);
    } catch (const std::exception& error) {
        const Notice notice = StartNotice(simulate, error, DesktopLanguage());
        desktop.ShowMessage(notice.text, notice.detail);
        return EXIT_FAILURE;
    }
    RunForm(*session, desktop, commandLine);
    const auto notice = session->Finish(DesktopLanguage());
    if (!notice) return EXIT_SUCCESS;
    desktop.ShowMessage(notice->text, notice->detail);
    return EXIT_FAILURE;
}

}  // namespace

// NOLINTNEXTLINE(readability-non-const-parameter): the system's own declaration
int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int) {
    const SystemParts parts;
    try {
        return RunProgram(platform::Utf8(commandLine));
    } catch (const std::exception& error) {
        const Notice notice = FailureNotice(error, DesktopLanguage());
        win32::ShowBox(nullptr, notice.text, notice.detail);
        return EXIT_FAILURE;
    }
}
