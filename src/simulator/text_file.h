#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vento::simulator {

/// What the simulator reads is text of at most so many bytes.
inline constexpr std::size_t kLargestText = std::size_t{4} << 20U;

/// The file's text. Throws platform::FileError with the system's reason, ScenarioError if it is too long.
[[nodiscard]] std::string ReadText(const std::filesystem::path& file);

/// Replaces the file, or the one that it is a link to, by one with this text; on failure the old file stays
/// as it was. Throws platform::FileError with the system's reason.
void ReplaceText(const std::filesystem::path& file, std::string_view text);

/// The UTF-8 form of a path, and back.
[[nodiscard]] std::string Utf8(const std::filesystem::path& path);
[[nodiscard]] std::filesystem::path PathFromUtf8(std::string_view text);

}  // namespace vento::simulator
