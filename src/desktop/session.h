#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "panel/run_operation.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/hid_host.h"
#include "text/language.h"

namespace vento::simulator {
class SimulatedHidHost;
}

namespace vento::desktop {

/// Something to tell the operator in a message box.
struct Notice {
    std::string text;
    std::string detail;
};

/// What a program with a window stands on from its start to its end: the machine's files and clock, and its
/// USB link or the simulator in its place.
class Session {
  public:
    /// `simulate` says what to simulate: nothing if empty or "0", the plain simulation if "1", otherwise the
    /// scenario in the file with this path. Throws a std::exception if the scenario can't be used;
    /// StartNotice then puts it into words.
    explicit Session(std::string_view simulate);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    Session(Session&&) = delete;
    Session& operator=(Session&&) = delete;
    ~Session();

    /// What the panel needs; the parts belong to the session.
    [[nodiscard]] Machine MachineWith(platform::Desktop& desktop);

    /// The window's title, which tells a simulation from the real thing.
    [[nodiscard]] std::string Title(Language language) const;

    /// The end of the program: the simulated remote is kept if the scenario names a place for it. A notice if
    /// that failed.
    [[nodiscard]] std::optional<Notice> Finish(Language language);

  private:
    std::unique_ptr<platform::Files> files_;
    std::unique_ptr<platform::Clock> clock_;
    std::unique_ptr<platform::HidHost> hid_;
    simulator::SimulatedHidHost* simulated_ = nullptr;  ///< `hid_`, if it is one
};

/// What the operator is told when a session with this `simulate` could not be made for this `reason`.
[[nodiscard]] Notice StartNotice(std::string_view simulate, const std::exception& error, Language language);

inline constexpr Phrase kUnforeseen{"Si è verificato un errore imprevisto",
                                    "Something unforeseen went wrong"};

/// What the operator is told of anything unforeseen.
[[nodiscard]] Notice FailureNotice(const std::exception& error, Language language);

/// The language of the desktop, for what has to be said before there is a panel.
[[nodiscard]] Language DesktopLanguage();

}  // namespace vento::desktop
