#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "controls/controls.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/hid_host.h"
#include "platform/native.h"
#include "programme/programme_record.h"
#include "protocol/program_remote.h"
#include "protocol/read_back.h"
#include "protocol/sequence.h"
#include "protocol/transmitter_kinds.h"
#include "protocol/verify_remote.h"

namespace vento {

/// The machine as the panel sees it. All four outlive the panel.
struct Machine {
    platform::HidHost& hid;
    platform::Desktop& desktop;
    platform::Files& files;
    platform::Clock& clock;
    platform::HidBackEnd backEnd;  ///< what stands behind `hid`, for advice
};

/// What `RunOperation` can do; other numbers end with `notStarted`.
inline constexpr std::int16_t kProgramOperation = 0;
inline constexpr std::int16_t kReadOperation = 2;
inline constexpr std::int16_t kVerifyOperation = 4;
inline constexpr std::int16_t kInspectOperation = 6;
inline constexpr std::int16_t kRemovalOperation = 8;

struct OperationOutcome {
    ResultCode code = ResultCode::noTransmitter;
    std::string message;             ///< for the status line
    Sentence diagnostic;             ///< what the message does not say; empty if all is well
    ProgrammingOutcome programming;  ///< of a programming run, or of a verification
    RemoteReading reading;           ///< of a read, or of an inspection
};

/// What `RunOperation` needs of the panel beside what its sequences do.
struct OperationPanel {
    TextBox& text;  ///< `Text1`: the code in decimal, or the text read
    const Machine& machine;
    Language language;
    OperationOutcome& outcome;  ///< new when it is handed over, filled as the operation goes
};

/// The one road from the panel to a remote: makes sure of the transmitter, sends the link timing, runs the
/// sequence and turns its result into words. The bar is hidden at the end, whatever came of it. The context's
/// yield may throw to end the program; the operation is then left as it stands. The same holds for what the
/// platform throws.
void RunOperation(std::int16_t operation, const Programme& programme, const TransmitterKind& kind,
                  const OperationContext& context, Link& link, const OperationPanel& panel);

/// The lines of a section of the settings file, "\\Firmware\\Quarzolab.ini" below the program's folder. No
/// lines if the file or the section is missing or empty.
[[nodiscard]] std::vector<std::string> ReadSettingsSection(platform::Files& files, std::string_view section);

}  // namespace vento
