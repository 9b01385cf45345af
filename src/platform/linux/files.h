#pragma once

#include "platform/files.h"

namespace vento::platform {

/// The files of a Linux system. Programme files are regular files: a pipe or a device, which may never end,
/// is refused like a folder.
class LinuxFiles final : public Files {
  public:
    [[nodiscard]] std::string ReadAll(const std::string& path, std::size_t most) override;
    void Delete(const std::string& path) override;
    [[nodiscard]] std::filesystem::path ProgramFolder() override;
    [[nodiscard]] std::size_t ReadSection(std::string_view section, std::span<char> buffer,
                                          const std::filesystem::path& file) override;
};

}  // namespace vento::platform
