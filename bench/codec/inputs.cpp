#include "codec/inputs.h"

#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <stdexcept>

namespace bench {
namespace {

Bytes Repeated(const std::string& path, std::size_t size) {
    std::ifstream file(path, std::ios::binary);
    const Bytes once{std::istreambuf_iterator<char>(file), {}};
    if (once.empty()) throw std::runtime_error("nothing to read in " + path);
    Bytes bytes;
    bytes.reserve(size);
    while (bytes.size() < size)
        bytes.push_back(once[bytes.size() % once.size()]);
    return bytes;
}

/// Bytes that are drawn with the given weights.
Bytes Drawn(std::size_t size, const std::function<double(int)>& weight) {
    std::vector<double> weights;
    for (int value = 0; value < 256; ++value)
        weights.push_back(weight(value));
    std::mt19937 random(20240229);
    std::discrete_distribution<int> distribution(weights.begin(), weights.end());
    Bytes bytes(size);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(distribution(random));
    return bytes;
}

}  // namespace

std::vector<Input> MakeInputs(std::size_t size, const std::string& textFile,
                              const std::string& executableFile) {
    return {{"text", Repeated(textFile, size)},
            {"executable", Repeated(executableFile, size)},
            {"90 % zeros", Drawn(size, [](int value) { return value == 0 ? 0.9 : 0.1 / 255; })},
            {"geometric", Drawn(size, [](int value) { return std::pow(0.9, value); })},
            {"near-uniform", Drawn(size, [](int value) { return value == 32 ? 0.02 : 0.98 / 255; })},
            {"ten by Zipf", Drawn(size, [](int value) { return value < 10 ? 1.0 / (value + 1) : 0.0; })}};
}

}  // namespace bench
