#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "desktop/layout.h"
#include "panel/form_web.h"

/// What a window says beside what the panel's controls hold. It follows from the panel's state; a window asks
/// again whenever that may have changed.
namespace vento::desktop {

/// The key that helps now.
enum class Help : std::uint8_t { none, cancel, details };

[[nodiscard]] Help HelpFor(FormWeb& form);

/// What stands in the bar's place: "Esc: cancel", "F1: details". Empty for none.
[[nodiscard]] std::string HintText(Help help, Language language);

/// What is known of the latest operation beside the status line, in lines of plain text; empty if there is
/// nothing.
[[nodiscard]] std::string DetailsOf(const FormWeb& form);

/// Whether a button is to look as if it could not be pressed, though it is enabled: what it would do, the
/// panel does not do now.
[[nodiscard]] bool IsDimmed(ControlId id, const FormWeb& form);

/// The tool tip of a control, which is its description for screen readers too. Plain text of one or more
/// lines without control characters; empty for none. `transmitter` is what the form said of it last.
[[nodiscard]] std::string GuidanceFor(ControlId id, FormWeb& form, platform::Presence transmitter);

}  // namespace vento::desktop
