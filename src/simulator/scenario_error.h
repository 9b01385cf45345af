#pragma once

#include <stdexcept>

namespace vento::simulator {

/// A scenario, or the image that it names, that can't be used. `what()` says at which key, what was expected
/// there and what was found.
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace vento::simulator
