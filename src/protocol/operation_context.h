#pragma once

#include <functional>
#include <string_view>

#include "controls/controls.h"
#include "platform/clock.h"

namespace vento {

/// The flag that cancels a wait is the `Tag` of a control, a boolean in words.
inline constexpr std::string_view kTagTrue = "True";
inline constexpr std::string_view kTagFalse = "False";

/// What a sequence writes to and asks for while it runs. All of it is the caller's.
struct OperationContext {
    Label& statusLabel;
    Button& cancelControl;         ///< enabled while a wait runs; its `Tag` is the cancel flag
    std::string_view waitingText;  ///< for `statusLabel` while a wait runs
    platform::Clock& clock;
    /// Gives the event loop a turn. Handlers run inside, and may end the program: it then throws, and the
    /// sequence is left as it stands.
    std::function<void()> yield;
};

}  // namespace vento
