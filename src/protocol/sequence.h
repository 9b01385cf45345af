#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "controls/controls.h"
#include "platform/clock.h"
#include "text/language.h"

namespace vento {

/// The outcome of an operation. 0 is success, 1 to 99 are failures with a row of their own among the panel's
/// messages, 100 and above would have no message.
enum class ResultCode : std::uint8_t {
    success = 0,
    refused = 1,              ///< a step of a larger one failed; the larger one says what that means
    noTransmitter = 2,        ///< no transmitter among the HID interfaces
    remoteNotDetected = 3,    ///< the wait for the remote ran out, or a section flag was not acknowledged
    sectionTableFailed = 5,   ///< no section table, or no code bytes to send
    sectionCountFailed = 6,   ///< no section count
    notStarted = 9,           ///< the link timing did not reach a transmitter, or no such operation
    nothingSelected = 10,     ///< no selected column with a list in the chosen set
    releaseFailed = 11,       ///< the remote did not acknowledge the end of the conversation
    versionFailed = 12,       ///< no version
    cancelled = 13,           ///< the operator cancelled the wait
    unusableData = 15,        ///< the programme, or what the remote says of itself, can't be worked with
    verificationFailed = 18,  ///< a written section failed its checksum
    activationFailed = 19,    ///< the first section could not be activated
    blockReadFailed = 20,     ///< the head of a section could not be read
    sectionFlagsFailed = 21,  ///< no section flags
};

/// What a command or a sequence comes to. The diagnostic says more than the code does, to whoever asks for
/// it, and is empty if all is well.
struct [[nodiscard]] SequenceResult {
    ResultCode code = ResultCode::success;
    Sentence diagnostic;

    [[nodiscard]] bool Failed() const { return code != ResultCode::success; }
};

/// The flag that cancels a wait is the `Tag` of a control, a boolean in words.
inline constexpr std::string_view kTagTrue = "True";
inline constexpr std::string_view kTagFalse = "False";

/// What a sequence writes to and asks for while it runs. All of it is the caller's.
struct OperationContext {
    Label& statusLabel;
    Button& cancelControl;         ///< enabled while a wait runs; its `Tag` is the cancel flag
    ProgressBar& progressBar;      ///< shown by a sequence that uses it, hidden by the caller
    std::string_view waitingText;  ///< for `statusLabel` while a wait runs
    platform::Clock& clock;
    /// Gives the event loop a turn. Handlers run inside, and may end the program: it then throws, and the
    /// sequence is left as it stands.
    std::function<void()> yield;
};

}  // namespace vento
