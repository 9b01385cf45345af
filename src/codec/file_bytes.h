#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "codec/bytes.h"

namespace vento::codec {

/// The path that a UTF-8 text names, on systems of every kind. Throws std::filesystem::filesystem_error for a
/// text with a NUL in it, which names nothing.
[[nodiscard]] std::filesystem::path PathOf(const std::string& text);

/// Whether `path` names a regular file.
[[nodiscard]] bool FileExists(const std::string& path);

/// A regular file that is read in pieces. All operations throw std::filesystem::filesystem_error.
class FileReader {
  public:
    /// Throws OverflowError for a file whose length does not fit 32 signed bits.
    explicit FileReader(const std::filesystem::path& path);

    /// Good as long as the reader lives.
    [[nodiscard]] ByteSource Source();

  private:
    std::span<const std::uint8_t> From(std::size_t offset);

    std::filesystem::path path_;
    std::size_t size_;
    std::ifstream file_;
    /// What is at hand: the bytes from `begin_` on.
    std::vector<std::uint8_t> piece_;
    std::size_t begin_ = 0;
};

/// All bytes of a file, in one read. Throws std::filesystem::filesystem_error, and OverflowError for a file
/// whose length does not fit 32 signed bits.
[[nodiscard]] std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& path);

/// Makes a new file of `bytes`, in one write, in place of the regular file that `path` may name or lead to.
/// A character device is written to. Throws std::filesystem::filesystem_error: if anything else is there,
/// which is left alone, or if the write fails; the file that was there is then gone.
void ReplaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

}  // namespace vento::codec
