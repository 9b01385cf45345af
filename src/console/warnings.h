#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "panel/form_web.h"
#include "text/language.h"

namespace vento::console {

/// What a programme file loads with, but hardly as it was meant.
struct Warning {
    std::size_t line = 0;  ///< counted from 1; 0 where the whole file is meant
    Sentence reason;
};

/// The warnings on a file with the bytes `text`, which was loaded into `form` with `load`, in the order of
/// its lines.
[[nodiscard]] std::vector<Warning> FindWarnings(std::string_view text, const FormWeb& form,
                                                const LoadResult& load);

}  // namespace vento::console
