#pragma once

#include <utility>

#include "platform/files.h"

namespace vento::platform {

/// The files of a POSIX system. Programme files are regular files: a pipe or a device, which may never end,
/// is refused like a folder.
class PosixFiles final : public Files {
  public:
    /// How a program finds out where it lies is for each system to say.
    explicit PosixFiles(std::filesystem::path programFolder) : programFolder_(std::move(programFolder)) {}

    [[nodiscard]] std::string ReadAll(const std::string& path, std::size_t most) override;
    void Delete(const std::string& path) override;
    [[nodiscard]] std::filesystem::path ProgramFolder() override { return programFolder_; }
    [[nodiscard]] std::size_t ReadSection(std::string_view section, std::span<char> buffer,
                                          const std::filesystem::path& file) override;

  private:
    std::filesystem::path programFolder_;
};

/// Copies the lines of the first section of that name, upper and lower case alike, from the text of an
/// initialisation file, as `Files::ReadSection` has it. Blank lines and comments (`;`) are left out, and so
/// are the blanks around a line. `buffer` holds two characters at least.
[[nodiscard]] std::size_t CopySection(std::string_view section, std::span<char> buffer,
                                      std::string_view text);

}  // namespace vento::platform
