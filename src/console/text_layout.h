#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Laying out UTF-8 text for a terminal. Widths are counted in characters: all that the system writes is of
/// Windows-1252, each of whose characters fills one place.
namespace vento::console {

[[nodiscard]] std::size_t Width(std::string_view text);

/// `text` followed by blanks up to `width`.
[[nodiscard]] std::string Pad(std::string_view text, std::size_t width);

/// `text` without control characters: what comes from a file or a device must not steer the terminal.
[[nodiscard]] std::string Printable(std::string_view text);

/// Breaks `text` at blanks and line feeds into lines of at most `width` (at least 1); words that are longer
/// are cut. Control characters are left out.
[[nodiscard]] std::vector<std::string> Wrap(std::string_view text, std::size_t width);

}  // namespace vento::console
