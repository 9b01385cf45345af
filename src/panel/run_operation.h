#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "controls/controls.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/hid_host.h"
#include "programme/programme_record.h"
#include "protocol/link_timing.h"
#include "protocol/result_code.h"

namespace vento {

/// The machine as the panel sees it. All four outlive the panel.
struct Machine {
    platform::HidHost& hid;
    platform::Desktop& desktop;
    platform::Files& files;
    platform::Clock& clock;
};

/// What `RunOperation` can do; other numbers end with `notStarted`.
inline constexpr std::int16_t kProgramOperation = 0;
inline constexpr std::int16_t kReadOperation = 2;

/// The controls that an operation writes to.
struct OperationControls {
    Label& statusLabel;        ///< `Label1`, while the sequences run; the outcome is for the caller to show
    Button& cancelControl;     ///< `Command6(3)`
    ProgressBar& progressBar;  ///< `ProgressBar1`, hidden at the end whatever the outcome
    TextBox& outcome;          ///< `Text1`: the code in decimal, or the text read
};

struct OperationOutcome {
    ResultCode code = ResultCode::noTransmitter;
    std::string message;  ///< for the status line
    std::string
        diagnostic;  ///< for the developer and the console, never for the status line; empty if all is well
};

/// The one road from the panel to a remote: makes sure of the transmitter, sends the link timing, runs the
/// sequence and turns its result into words. `vendorId` and `productId` are overwritten. `yield` may throw to
/// end the program; the operation is then left as it stands. The same holds for what the platform throws.
[[nodiscard]] OperationOutcome RunOperation(std::int16_t operation, const Programme& programme,
                                            const OperationControls& controls, const LinkTimingSet& timing,
                                            std::int32_t& vendorId, std::int32_t& productId,
                                            const Machine& machine, Language language,
                                            const std::function<void()>& yield);

/// A plain sentence about a transmitter that is there but can't be opened, and what to do about it; empty
/// without such an obstacle.
[[nodiscard]] std::string DescribeObstacle(const platform::HidHost& host,
                                           std::optional<platform::OpenOutcome> obstacle, Language language);

}  // namespace vento
