#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/faults.h"
#include "simulator/remote.h"

namespace vento::simulator {

/// A HID interface of the simulated machine. With a vendor id of a transmitter there is one behind it.
struct SimulatedInterface {
    std::uint16_t vendorId = 1240;
    std::uint16_t productId = 1;
    bool opens = true;  ///< false: the user may not open it
};

/// What is simulated. As it comes, it is the plain simulation: a transmitter, an empty remote in front of it.
struct Scenario {
    std::vector<SimulatedInterface> interfaces = {SimulatedInterface{}};  ///< in the order of the search
    std::optional<RemoteSetup> remote = RemoteSetup{};
    std::chrono::microseconds perReport{1000};  ///< how long a report takes, in either direction
    std::filesystem::path image;                ///< empty for none
    std::vector<Fault> faults;
};

/// Reads a scenario from JSON text. A relative `image` is looked for in `folder`. Throws
/// storage::ContentError.
[[nodiscard]] Scenario ParseScenario(std::string_view text, const std::filesystem::path& folder);

/// Reads a scenario from the file with this UTF-8 path. Throws platform::FileError if the file can't be read,
/// storage::ContentError if its content can't be used.
[[nodiscard]] Scenario LoadScenario(const std::string& path);

}  // namespace vento::simulator
