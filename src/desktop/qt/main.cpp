// vento [FILE]: the window.

#include <QApplication>
#include <QSessionManager>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <string>

#include "desktop/qt/form_window.h"
#include "desktop/qt/look.h"
#include "desktop/qt/qt_desktop.h"
#include "desktop/qt/session_bus.h"
#include "desktop/qt/termination.h"
#include "desktop/session.h"
#include "panel/form_web.h"

namespace {

using namespace vento;
using namespace vento::desktop;

struct StartFile {
    std::string text;
    CommandLineKind kind = CommandLineKind::typed;
};

// What stands behind the program's name, as one string. A single argument that is the name of something has
// had its quotation marks taken out by the shell: one that is left belongs to the name.
StartFile StartFileOf(int argc, char** argv) {
    StartFile file;
    for (int i = 1; i < argc; ++i) {
        if (i > 1) file.text += ' ';
        file.text += argv[i];
    }
    std::error_code unknown;
    if (argc == 2 && exists(std::filesystem::symlink_status(file.text, unknown)))
        file.kind = CommandLineKind::path;
    return file;
}

// No exception may pass through the toolkit: what a handler throws is told, and the program goes on.
class Application : public QApplication {
  public:
    using QApplication::QApplication;

    void Use(qt::QtDesktop& desktop) { desktop_ = &desktop; }

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            const bool isQuestion = event->type() == QEvent::MetaCall && receiver->inherits("AtSpiAdaptor");
            if (isQuestion && desktop_ != nullptr) desktop_->CountQuestion();
            return QApplication::notify(receiver, event);
        } catch (const std::exception& error) {
            Tell(error);
            return false;
        }
    }

  private:
    // Where not even the box can be had for lack of memory, the program goes on without it.
    void Tell(const std::exception& error) {
        if (telling_ || desktop_ == nullptr) return;
        telling_ = true;
        try {
            const Notice notice = FailureNotice(error, DesktopLanguage());
            desktop_->ShowMessage(notice.text, notice.detail);
        } catch (const std::bad_alloc&) {
            qCritical("There is not enough memory.");
        }
        telling_ = false;
    }

    qt::QtDesktop* desktop_ = nullptr;
    bool telling_ = false;
};

int RunForm(Session& session, qt::QtDesktop& desktop, qt::Look& look, qt::Termination& termination,
            const StartFile& file) {
    FormWeb form(session.MachineWith(desktop));
    form.Form_Load(file.text, file.kind);
    qt::FormWindow window(form, desktop, look, qt::Text(session.Title(form.PanelLanguage())));
    desktop.SetWindow(&window, [&window] { window.Refresh(); });
    const auto show = [&](qt::Contrast contrast) {
        look.SetContrast(contrast);
        window.ApplyLook();
    };
    const qt::ContrastWatch contrast(show);
    show(contrast.Current());
    // However the event loop comes to its end, the form has been closed.
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &window, [&form] { form.Form_Unload(); });
    const qt::Termination::Instead closing(termination, [&form] { form.Form_Unload(); });
    window.show();
    const int status = QApplication::exec();
    return status;
}

// The exit status, and what the operator is to be told, if there is anything.
int Run(qt::QtDesktop& desktop, qt::Look& look, qt::Termination& termination, const StartFile& file,
        Language language, std::optional<Notice>& notice) {
    const char* const variable = std::getenv("VENTO_SIMULATE");
    const std::string simulate = variable == nullptr ? "" : variable;
    std::optional<Session> session;
    try {
        session.emplace(simulate);
    } catch (const std::exception& error) {
        notice = StartNotice(simulate, error, language);
        return EXIT_FAILURE;
    }
    const int status = RunForm(*session, desktop, look, termination, file);
    notice = session->Finish(language);
    return notice ? EXIT_FAILURE : status;
}

}  // namespace

int main(int argc, char** argv) {
    const StartFile file = StartFileOf(argc, argv);
    qt::Termination termination;
    int ownArguments = 1;  // all others are the file's name and none of the toolkit's business
    Application application(ownArguments, argv);
    QApplication::setApplicationName(qt::Text(FormWeb::kTitle));
    QGuiApplication::setDesktopFileName("vento");
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // The programme file is gone with the program: there is nothing to come back to at the next login.
    QObject::connect(qApp, &QGuiApplication::saveStateRequest, qApp,
                     [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
    const Language language = DesktopLanguage();
    qt::TranslateToolkit(language);
    qt::Look look;
    qt::QtDesktop desktop(look);
    application.Use(desktop);

    termination.Watch([&desktop] { desktop.EndProgram(); });
    int status = EXIT_FAILURE;
    std::optional<Notice> notice;
    try {
        status = Run(desktop, look, termination, file, language, notice);
    } catch (const std::exception& error) {
        notice = FailureNotice(error, language);
    }
    if (notice) desktop.ShowMessage(notice->text, notice->detail);
    return status;
}
