// window_endurance PROGRAMME [RUNS]: as many operations in one window, begun by a press of its buttons, on a
// simulated machine; of ten eight program and two read. On a screen of memory unless QT_QPA_PLATFORM says
// otherwise.

#include <QApplication>
#include <QPushButton>
#include <string>

#include "desktop/qt/form_window.h"
#include "desktop/qt/look.h"
#include "desktop/qt/qt_desktop.h"
#include "endurance.h"
#include "panel/form_web.h"
#include "platform/native.h"
#include "simulator/simulated_hid_host.h"

int main(int argc, char** argv) {
    using namespace vento;
    if (argc < 2) return EXIT_FAILURE;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    desktop::qt::Look look;
    desktop::qt::QtDesktop screen(look);
    simulator::Scenario scenario;
    scenario.perReport = {};
    const auto clock = platform::MakeNativeClock();
    const auto files = platform::MakeNativeFiles();
    simulator::SimulatedHidHost host(scenario, *clock);
    FormWeb form({host, screen, *files, *clock, platform::HidBackEnd::simulation});
    form.Form_Load(argv[1], CommandLineKind::path);
    desktop::qt::FormWindow window(form, screen, look, "endurance");
    screen.SetWindow(&window, [&window] { window.Refresh(); });
    window.show();
    const auto press = [&window](const std::string& caption) {
        for (QAbstractButton* const button : window.findChildren<QAbstractButton*>()) {
            if (button->isVisible() && button->accessibleName().toStdString() == caption) button->click();
        }
    };
    return bench::Endure(argc > 2 ? std::stoul(argv[2]) : 10'000, [&](std::size_t run) {
        press((run % 10 < 2 ? form.Command2 : form.Command6(0)).Caption());
        QApplication::processEvents();
        return form.LatestOutcome() && form.LatestOutcome()->code == ResultCode::success;
    });
}
