// The page's C++ side: what the script calls. An export that may wait says so; while one of these waits,
// another one does nothing, as there is one stack.

#include <cstddef>
#include <exception>
#include <memory>
#include <string>

#include "desktop/session.h"
#include "desktop/web/page.h"
#include "desktop/web/script.h"
#include "desktop/web/shipped_files.h"
#include "desktop/web/web_desktop.h"

namespace {

using namespace vento;
using namespace vento::desktop;
using web::script::TextRoom;

struct Program {
    std::unique_ptr<web::Page> page;
    std::string simulate;
    bool waiting = false;  ///< an export that may wait is under way
};

Program& TheProgram() {
    static Program program;
    return program;
}

/// Nothing may leave C++: what a handler throws is told, and the page goes on.
template <class Body>
void Guarded(Body body) {
    try {
        body();
    } catch (const std::exception& error) {
        const Notice notice = FailureNotice(error, DesktopLanguage());
        web::script::Tell(web::BoxJson(notice.text, notice.detail));
    }
}

template <class Body>
void MayWait(Body body) {
    Program& program = TheProgram();
    if (program.waiting || !program.page || program.page->Ended()) return;
    // What the script throws passes through here too, and must not leave the page waiting for ever.
    const auto done = [](bool* waiting) { *waiting = false; };
    const std::unique_ptr<bool, decltype(done)> waiting(&(program.waiting = true), done);
    Guarded([&] { body(*program.page); });
}

template <class Body>
void AtOnce(Body body) {
    Program& program = TheProgram();
    if (program.page && !program.page->Ended()) Guarded([&] { body(*program.page); });
}

/// The page anew, with this simulation or none and the file that is open. The old one stays if that can't be.
void Restart(const std::string& simulate) {
    Program& program = TheProgram();
    const std::string file = program.page ? program.page->File() : std::string();
    try {
        program.page = std::make_unique<web::Page>(simulate, file);
        program.simulate = simulate;
    } catch (const std::exception& error) {
        const Notice notice = StartNotice(simulate, error, DesktopLanguage());
        web::script::Tell(web::BoxJson(notice.text, notice.detail));
    }
}

std::size_t Answer(const std::string& text) {
    TextRoom() = text;
    return text.size();
}

}  // namespace

// NOLINTBEGIN(readability-identifier-naming): the names that the script knows
extern "C" {

/// Room for a text of `size` bytes, until the next call.
[[clang::export_name("room")]] char* vento_room(std::size_t size) {
    TextRoom().assign(size, '\0');
    return TextRoom().data();
}

/// Where the text in the room stands.
[[clang::export_name("text")]] const char* vento_text() {
    return TextRoom().data();
}

/// Begins, or begins anew, with the simulation that the room names, in the language that the platform tells.
/// Not while an export waits.
[[clang::export_name("start")]] void vento_start() {
    if (!TheProgram().waiting) Guarded([] { Restart(std::string(TextRoom())); });
}

/// The same, with the simulation as it is: the language has changed.
[[clang::export_name("restart")]] void vento_restart() {
    if (!TheProgram().waiting) Guarded([] { Restart(std::string(TheProgram().simulate)); });
}

/// A button was pressed: a ControlId. May wait.
[[clang::export_name("press")]] void vento_press(int control) {
    MayWait([&](web::Page& page) { page.Press(static_cast<ControlId>(control)); });
}

/// The operator wants to choose a transmitter. May wait.
[[clang::export_name("connect")]] void vento_connect() {
    MayWait([](web::Page& page) { page.Connect(); });
}

/// The file that the room names is to be opened. May wait.
[[clang::export_name("open")]] void vento_open() {
    MayWait([path = TextRoom()](web::Page& page) { page.Open(path); });
}

/// The file that the room names is neither a programme nor a scenario.
[[clang::export_name("refuse")]] void vento_refuse() {
    AtOnce([](web::Page& page) { page.Refuse(std::string(TextRoom())); });
}

[[clang::export_name("cancel")]] void vento_cancel() {
    AtOnce([](web::Page& page) { page.Cancel(); });
}

[[clang::export_name("details")]] void vento_details() {
    AtOnce([](web::Page& page) { page.ShowDetails(); });
}

[[clang::export_name("hint")]] void vento_hint() {
    AtOnce([](web::Page& page) { page.DoHint(); });
}

[[clang::export_name("look")]] void vento_look() {
    AtOnce([](web::Page& page) { page.Look(); });
}

[[clang::export_name("close")]] void vento_close() {
    AtOnce([](web::Page& page) { page.Close(); });
}

/// Leaves every step of the latest operation in the room; its length.
[[clang::export_name("trace")]] std::size_t vento_trace() {
    return TheProgram().page ? Answer(TheProgram().page->TraceText()) : 0;
}

/// Leaves the rule that lets a Linux user open the transmitter in the room; its length.
[[clang::export_name("udevRule")]] std::size_t vento_udev_rule() {
    return Answer(std::string(web::kUdevRule));
}

/// Leaves the example programme in the room; its length.
[[clang::export_name("example")]] std::size_t vento_example() {
    return Answer({web::kExampleProgramme.begin(), web::kExampleProgramme.end()});
}

}  // extern "C"
// NOLINTEND(readability-identifier-naming)
