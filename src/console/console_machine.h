#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "console/chosen_hid_host.h"
#include "console/commands.h"
#include "console/notices.h"
#include "console/recorded_host.h"
#include "console/trace_file.h"
#include "panel/run_operation.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/native.h"
#include "platform/terminal.h"
#include "simulator/simulated_hid_host.h"
#include "trace/traced_hid_host.h"

namespace vento::console {

/// A desktop without a window. Its message boxes are lines on standard error that nobody has to close; its
/// events are the operator's interrupts.
class ConsoleDesktop final : public platform::Desktop {
  public:
    /// `terminal` and `notices` outlive this.
    ConsoleDesktop(const platform::Terminal& terminal, Notices& notices, Language language)
        : terminal_(terminal), notices_(notices), language_(language) {}

    /// Throws EndedAtOnce if that is demanded. Otherwise an interrupt that came in since the latest yield
    /// goes to the handler.
    void Yield() override;
    void ShowMessage(std::string_view text, std::string_view detail) override;
    [[nodiscard]] std::optional<std::string> ChooseFile(std::string_view, std::string_view) override {
        return std::nullopt;
    }
    [[nodiscard]] std::string ActiveFormName() const override { return "FormWeb"; }
    [[nodiscard]] platform::TwipSize ScreenSize() const override { return {}; }
    [[nodiscard]] std::optional<std::string> LanguageAbbreviation() override;
    [[nodiscard]] std::unique_ptr<platform::SleepInhibitor> InhibitSleep(std::string_view reason) override {
        return platform::InhibitNativeSleep(reason);
    }
    void EndProgram() override {}

    void OnInterrupt(std::function<void()> handler) { onInterrupt_ = std::move(handler); }
    /// `handler` has a turn at each yield.
    void OnYield(std::function<void()> handler) { onYield_ = std::move(handler); }
    /// Whether the operator has pressed Ctrl-C.
    [[nodiscard]] bool Interrupted() const { return interruptsHandled_ > 0; }

    /// The text of the latest message box; nothing if there was none.
    [[nodiscard]] const std::optional<std::string>& LatestMessage() const { return latestMessage_; }
    [[nodiscard]] const std::string& LatestDetail() const { return latestDetail_; }

  private:
    const platform::Terminal& terminal_;
    Notices& notices_;
    Language language_;
    std::function<void()> onInterrupt_;
    std::function<void()> onYield_;
    int interruptsHandled_ = 0;
    std::optional<std::string> latestMessage_;
    std::string latestDetail_;
};

/// The machine that the options ask for: this one, one with a simulated transmitter and remote, or one with
/// those that a trace has recorded; traced if they say so.
class ConsoleMachine {
  public:
    /// Throws Failure if the scenario can't be used or the trace can't be written.
    explicit ConsoleMachine(const Console& console);

    [[nodiscard]] Machine ForPanel() { return {hid_, desktop_, *files_, *clock_, BackEnd()}; }
    [[nodiscard]] platform::HidBackEnd BackEnd() const {
        return simulated_ || recorded_ ? platform::HidBackEnd::simulation : platform::NativeHidBackEnd();
    }
    [[nodiscard]] TracedHidHost& Hid() { return hid_; }
    [[nodiscard]] const ChosenHidHost& Chosen() const { return chosen_; }
    [[nodiscard]] ConsoleDesktop& Desktop() { return desktop_; }
    [[nodiscard]] platform::Clock& Clock() { return *clock_; }

    /// The work is done: writes the simulated remote's image. Throws Failure if that or the trace was not
    /// written whole. Without this call the image is written too, but nobody hears of a failure.
    void Finish();

  private:
    [[nodiscard]] platform::HidHost& Host();

    std::unique_ptr<platform::Files> files_;
    std::unique_ptr<platform::Clock> clock_;
    std::unique_ptr<RecordedHidHost> recorded_;               ///< this,
    std::unique_ptr<simulator::SimulatedHidHost> simulated_;  ///< this or
    std::unique_ptr<platform::HidHost> native_;               ///< this
    std::optional<TraceFile> trace_;
    ChosenHidHost chosen_;
    TracedHidHost hid_;
    ConsoleDesktop desktop_;
};

}  // namespace vento::console
