#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace vento::codec {

/// All bytes of a file, in one read. Throws std::filesystem::filesystem_error, and OverflowError for a file
/// whose length does not fit 32 signed bits.
[[nodiscard]] std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& path);

/// Makes a new file of `bytes`, in one write, in place of the one that may be there. Throws
/// std::filesystem::filesystem_error; what was there is then gone.
void ReplaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

}  // namespace vento::codec
