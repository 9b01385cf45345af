#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<std::uint8_t>;

struct Input {
    std::string name;
    Bytes bytes;
};

/// The six kinds of data, `size` bytes of each, the same in every run: `textFile` and `executableFile`
/// repeated as often as it takes, and four that are drawn at random from a fixed seed.
std::vector<Input> MakeInputs(std::size_t size, const std::string& textFile,
                              const std::string& executableFile);

}  // namespace bench
