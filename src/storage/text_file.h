#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/file_error.h"

namespace vento::storage {

/// What is read as a text has at most so many bytes.
inline constexpr std::size_t kLargestText = std::size_t{4} << 20U;

/// The text of a regular file. Throws platform::FileError, and ContentError if it is too long.
[[nodiscard]] std::string ReadText(const std::filesystem::path& file);

/// Replaces the file, or the one that it is a link to, by one with this text, as platform::Replacement does.
void ReplaceText(const std::filesystem::path& file, std::string_view text);

}  // namespace vento::storage
