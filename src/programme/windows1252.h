#pragma once

#include <string>
#include <string_view>

namespace vento {

/// Programme files are written in Windows-1252, the texts of the system in UTF-8. Every byte has a character:
/// the five that Windows-1252 leaves unassigned stand for the control characters of the same number, as in
/// the best-fit table that Unicode publishes for the code page (bestfit1252.txt).
[[nodiscard]] std::string Utf8FromWindows1252(std::string_view bytes);

}  // namespace vento
