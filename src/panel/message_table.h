#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "protocol/sequence.h"
#include "text/language.h"

namespace vento {

/// The words of the panel: rows of language id, code and text, UTF-8. Each language has 26 of them, in the
/// order of `Language`: 22 rows for the result codes are followed by the 4 button captions.
inline constexpr std::size_t kRowsOfLanguage = 26;
inline constexpr std::size_t kMessageRows = kRowsOfLanguage * kLanguageCount;
inline constexpr std::size_t kMessageColumns = 3;

extern const std::array<std::array<std::string_view, kMessageColumns>, kMessageRows> MessageTable;

/// Rows within a language that are not those of result codes.
enum class PanelText : std::size_t {
    waitingForRemote = 20,
    openCaption = 22,
    programCaption = 23,
    readCaption = 24,
    closeCaption = 25,
};

/// `language` is "ITA", to the letter, for Italian; anything else is English.
[[nodiscard]] Language LanguageFromAbbreviation(std::string_view language);

[[nodiscard]] std::string_view PanelTextFor(PanelText text, Language language);

/// The text for a result; empty for codes that have no row.
[[nodiscard]] std::string_view MessageFor(ResultCode code, Language language);

}  // namespace vento
