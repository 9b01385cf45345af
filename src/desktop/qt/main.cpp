// vento [FILE]: the window.

#include <QApplication>
#include <QSessionManager>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

#include "desktop/qt/form_window.h"
#include "desktop/qt/look.h"
#include "desktop/qt/qt_desktop.h"
#include "desktop/qt/termination.h"
#include "desktop/session.h"
#include "panel/form_web.h"

namespace {

using namespace vento;
using namespace vento::desktop;

// What stands behind the program's name, as one string.
std::string CommandLine(int argc, char** argv) {
    std::string line;
    for (int i = 1; i < argc; ++i) {
        if (i > 1) line += ' ';
        line += argv[i];
    }
    return line;
}

int RunForm(Session& session, qt::QtDesktop& desktop, qt::Termination& termination,
            const std::string& commandLine) {
    FormWeb form(session.MachineWith(desktop));
    form.Form_Load(commandLine);
    qt::FormWindow window(form, qt::Text(session.Title(form.PanelLanguage())));
    desktop.SetWindow(&window);
    // However the event loop comes to its end, the form has been closed.
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &window, [&form] { form.Form_Unload(); });
    termination.Watch([&form] { form.Form_Unload(); });
    window.show();
    const int status = QApplication::exec();
    desktop.SetWindow(nullptr);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string commandLine = CommandLine(argc, argv);
    qt::Termination termination;
    int ownArguments = 1;  // all others are the file's name and none of the toolkit's business
    const QApplication application(ownArguments, argv);
    QApplication::setApplicationName(qt::Text(FormWeb::kTitle));
    QGuiApplication::setDesktopFileName("vento");
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // The programme file is gone with the program: there is nothing to come back to at the next login.
    QObject::connect(qApp, &QGuiApplication::saveStateRequest, qApp,
                     [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
    const Language language = DesktopLanguage();
    qt::ApplyLook(language);

    qt::QtDesktop desktop;
    const char* const variable = std::getenv("VENTO_SIMULATE");
    const std::string simulate = variable == nullptr ? "" : variable;
    std::optional<Session> session;
    try {
        session.emplace(simulate);
    } catch (const std::runtime_error& error) {
        const Notice notice = StartNotice(simulate, error.what(), language);
        desktop.ShowMessage(notice.text, notice.detail);
        return EXIT_FAILURE;
    }
    const int status = RunForm(*session, desktop, termination, commandLine);
    const auto notice = session->Finish(language);
    if (!notice) return status;
    desktop.ShowMessage(notice->text, notice->detail);
    return EXIT_FAILURE;
}
