#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What the page's script does for the C++ side. Structures go over as JSON; texts are UTF-8.
namespace vento::desktop::web::script {

/// Where the script puts a text for the next call, or its answer to the one that is under way.
[[nodiscard]] std::string& TextRoom();

/// The texts and places that stay the same while the program runs; to be sent before the first view.
void SendTexts(std::string_view json);

/// What the page is to show from now on.
void Show(std::string_view json);

/// A box with one button, which does not keep the program waiting.
void Tell(std::string_view json);

/// The same, and comes back when it is closed. Suspends.
void Ask(std::string_view json);

/// Has the operator choose a file; its path, or nothing if the operator cancels. Suspends.
[[nodiscard]] std::optional<std::string> ChooseFile(std::string_view title, std::string_view filter);

/// The program is over: the page says so with the texts in `json`.
void End(std::string_view json);

/// Whether the browser runs on Linux, where access to devices is the matter of udev.
[[nodiscard]] bool OnLinux();

/// Whether this browser has all that it takes to work with a transmitter. Without that an export can't wait
/// either: a box or a turn is over at once, and the script shows afterwards what there was to see.
[[nodiscard]] bool CanReachTransmitters();

}  // namespace vento::desktop::web::script
