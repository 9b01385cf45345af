#pragma once

#include <memory>
#include <optional>

#include "console/commands.h"
#include "console/console_desktop.h"
#include "console/trace.h"
#include "console/traced_hid_host.h"
#include "panel/run_operation.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "simulator/simulated_hid_host.h"

namespace vento::console {

/// The language that the options or else the desktop want.
[[nodiscard]] Language ChosenLanguage(const Options& options);

/// The machine that the options ask for: this one, or one with a simulated transmitter and remote; traced if
/// they say so.
class ConsoleMachine {
  public:
    /// Throws Failure if the scenario can't be used or the trace can't be written.
    explicit ConsoleMachine(const Console& console);

    [[nodiscard]] Machine ForPanel() { return {hid_, desktop_, *files_, *clock_}; }
    [[nodiscard]] TracedHidHost& Hid() { return hid_; }
    [[nodiscard]] ConsoleDesktop& Desktop() { return desktop_; }
    [[nodiscard]] platform::Clock& Clock() { return *clock_; }

    /// The work is done: writes the simulated remote's image. Throws Failure if that or the trace was not
    /// written whole. Without this call the image is written too, but nobody hears of a failure.
    void Finish();

  private:
    std::unique_ptr<platform::Files> files_;
    std::unique_ptr<platform::Clock> clock_;
    std::unique_ptr<simulator::SimulatedHidHost> simulated_;  ///< this or
    std::unique_ptr<platform::HidHost> native_;               ///< this
    std::optional<Trace> trace_;
    TracedHidHost hid_;
    ConsoleDesktop desktop_;
};

}  // namespace vento::console
