#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/layout.h"
#include "text/language.h"

/// What the page says beside what every window does, because it stands in a browser.
namespace vento::desktop::web {

/// What the page knows of its way to a remote.
enum class LinkState : std::uint8_t {
    simulated,
    unreachable,  ///< the browser has no way to a transmitter; what runs is the simulation
    notGranted,   ///< none is there that the operator has let the page use
    unplugged,    ///< the one that the page could use is gone
    forbidden,
    inUse,
    ready,
};

[[nodiscard]] std::string LinkText(LinkState state, Language language);

/// One thing to do, with the commands that do it, if there are any.
struct Step {
    std::string text;
    std::vector<std::string> commands;
};

/// How a user of Linux gets the right to open a transmitter.
[[nodiscard]] std::vector<Step> PermissionSteps(Language language);

/// What is told when the browser's own prompt was closed without a transmitter.
[[nodiscard]] std::string NothingChosenText(Language language);
[[nodiscard]] std::string NothingChosenDetail(Language language);

/// The tool tip of the close button while this file is open: the page asks before it deletes.
[[nodiscard]] std::string CloseGuidance(const std::string& file, Language language);

/// What is told of a file that is neither a programme nor a scenario.
[[nodiscard]] std::string ForeignFileText(Language language);

/// The element of the page that shows a control: its name in FormWeb.
[[nodiscard]] std::string_view ElementOf(ControlId id);

/// The names, places, fonts and texts that stay the same while the program runs, as the script takes them.
[[nodiscard]] std::string TextsJson(Language language);

/// The texts of the program's end, with this programme file or none, as the script takes them.
[[nodiscard]] std::string EndJson(const std::string& file, Language language);

}  // namespace vento::desktop::web
