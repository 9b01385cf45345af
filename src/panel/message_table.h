#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "protocol/result_code.h"
#include "text/language.h"

namespace vento {

/// The words of the panel: 52 rows of language id, code and text, UTF-8. Rows 0 to 25 are Italian, rows 26 to
/// 51 the same in English; in each half 22 rows for the result codes are followed by the 4 button captions.
inline constexpr std::size_t kMessageRows = 52;
inline constexpr std::size_t kMessageColumns = 3;
inline constexpr std::size_t kEnglishRow = 26;  // added to an Italian row

extern const std::array<std::array<std::string_view, kMessageColumns>, kMessageRows> MessageTable;

/// Rows of the Italian half that are not those of result codes.
enum class PanelText : std::size_t {
    waitingForRemote = 20,
    openCaption = 22,
    programCaption = 23,
    readCaption = 24,
    closeCaption = 25,
};

/// `language` is "ITA", to the letter, for Italian; anything else is English.
[[nodiscard]] Language LanguageFromAbbreviation(std::string_view language);

[[nodiscard]] std::string_view TextOf(PanelText text, Language language);

/// The text for a result; empty for codes that have no row.
[[nodiscard]] std::string_view TextOf(ResultCode code, Language language);

}  // namespace vento
