#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "controls/controls.h"
#include "panel/run_operation.h"
#include "panel/version_ctrl.h"
#include "platform/hid_host.h"
#include "programme/loader.h"
#include "protocol/transmitter_kinds.h"

namespace vento {

/// What the text behind the program's name is: as it was typed, where quotation marks enclose a path or a
/// part of one, or a path that the shell has taken out of them already.
enum class CommandLineKind : std::uint8_t { typed, path };

/// The one form of the program, without a window: all its controls, those that are never shown too, and what
/// each event does. A front end shows the controls and calls the handlers; it adds nothing.
///
/// Handlers run on one thread, to their end, except that an operation on a remote lets the event loop have a
/// turn now and then, and with it another handler. While an operation runs, or a box or dialog of a handler
/// is open, the handlers that would begin something else do nothing at all; the close button and closing
/// always work. After either of them no handler does anything any more, and a running operation is left at
/// the very yield.
class FormWeb {
  public:
    static constexpr std::string_view kTitle = "VENTO-Programmazione";

    static constexpr int kCancelHolder = 3;  ///< index in Command6 of the button that holds the cancel flag

    explicit FormWeb(const Machine& machine) : machine_(machine) {}
    FormWeb(const FormWeb&) = delete;
    FormWeb& operator=(const FormWeb&) = delete;
    FormWeb(FormWeb&&) = delete;
    FormWeb& operator=(FormWeb&&) = delete;
    ~FormWeb() = default;

    std::array<ListView, kColumns> ListView1;  ///< the columns' labels
    std::array<ListView, kColumns> ListView2;  ///< lists A, never shown
    std::array<ListView, kColumns> ListView3;  ///< lists B, never shown
    Button Command2;                           ///< read
    Button Command3;                           ///< close
    Button Command4;                           ///< open
    Label Label1;                              ///< status line
    Label Label2{false};                       ///< path of the programme file, never shown
    TextBox Text1{"Text1"};                    ///< outcome of the latest operation, never shown
    ProgressBar ProgressBar1;
    FormPlace Place{0, 0, 9270, 6705};
    std::string Language;  ///< set by Form_Load: "ITA" for Italian, anything else for English

    /// A member of the array of buttons with the indexes 0 (program), 3 (holder of the cancel flag, never
    /// shown, and enabled only while a wait runs) and 10 (never shown). No other index.
    [[nodiscard]] Button& Command6(int index);

    [[nodiscard]] vento::Language PanelLanguage() const;

    /// Start-up. `commandLine` is what stands behind the program's name, as one string: the path of a
    /// programme file or nothing. A file that can't be loaded is passed over without a word.
    void Form_Load(std::string_view commandLine, CommandLineKind kind = CommandLineKind::typed);

    /// The form is closed: the programme file is deleted and the program ends.
    void Form_Unload();

    void Command2_Click();
    void Command3_Click();
    void Command4_Click();
    void Command6_Click(std::int16_t index);

    /// Proves the loaded programme against a remote; asks a remote what a programme would meet there; waits
    /// until a remote is taken away. No button of the form does these: they are for front ends without one.
    void Verify();
    void Inspect();
    void AwaitRemoval();

    /// What the views hold.
    [[nodiscard]] Programme GatherProgramme() const;

    /// A file was dropped on the form: it loads as if it had been chosen in the file dialog.
    void DropFile(const std::string& path);

    /// The operator's cancel: ends a wait for the remote, and does nothing at any other time.
    void Cancel();

    /// Loads a programme file into the views. What came of it is in the panel's state, and for those who want
    /// to know more in the result.
    LoadResult Aprifilevento(const std::string& nnfilevento);

    /// What the latest operation that was begun here came to; nothing if it ran no operation.
    [[nodiscard]] const std::optional<OperationOutcome>& LatestOutcome() const { return latestOutcome_; }

    /// Whether the conversation with a remote is under way, its waits included.
    [[nodiscard]] bool Operating() const { return running_ != nullptr; }

    /// The column that is being written into a remote now.
    [[nodiscard]] std::optional<std::size_t> ColumnInWork() const {
        return Operating() ? running_->programming.ColumnInWork() : std::nullopt;
    }

    /// Why the file that was named to the loader last did not load; nothing if it did, and without a file.
    [[nodiscard]] const std::optional<LoadProblem>& LatestLoadProblem() const { return latestLoadProblem_; }

    /// Whether a transmitter is there for the next operation. Opens nothing.
    [[nodiscard]] platform::Presence Transmitter() const { return machine_.hid.Detect(IsTransmitter); }

    /// How far a run has come that is at it, or was left by an exception.
    [[nodiscard]] const ProgrammingOutcome& Unfinished() const { return ongoing_.programming; }

    /// Such a run has begun to change the remote.
    [[nodiscard]] bool HalfProgrammed() const { return Unfinished().writing; }

    [[nodiscard]] bool Ended() const { return ended_; }

  private:
    template <class Body>
    void Begin(Body body);
    void BeginOperation(std::int16_t operation, const Programme& programme);
    void Act(std::int16_t index);
    void Operate(std::int16_t operation, const Programme& programme, Link& link);
    void OpenOrExplain(const std::string& path);
    [[nodiscard]] bool FindTransmitter(Link& link);
    void End();

    Machine machine_;
    std::array<Button, 3> command6_{Button{false, true}, Button{false, false}, Button{false, true}};
    std::optional<OperationOutcome> latestOutcome_;
    std::optional<LoadProblem> latestLoadProblem_;
    OperationOutcome ongoing_;  ///< of the operation that runs
    bool busy_ = false;
    const OperationOutcome* running_ = nullptr;  ///< what is known so far of the operation that runs
    bool ended_ = false;
};

}  // namespace vento
