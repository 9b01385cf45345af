#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace vento::simulator {

/// Reads strict JSON: no comments, no key twice in an object, nothing behind the end, nesting of 16 at the
/// most. Throws ScenarioError with the place.
[[nodiscard]] nlohmann::json ParseJson(std::string_view text);

}  // namespace vento::simulator
