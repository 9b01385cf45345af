#pragma once

#include <string>
#include <string_view>

#include "platform/tongue.h"

namespace vento::console {

/// A few words that the console program says by itself, in both languages.
struct Phrase {
    std::string_view italian;
    std::string_view english;

    [[nodiscard]] std::string In(platform::Tongue tongue) const {
        return std::string(tongue == platform::Tongue::italian ? italian : english);
    }
};

}  // namespace vento::console
