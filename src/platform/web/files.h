#pragma once

#include "platform/files.h"

namespace vento::platform {

/// The files that the operator gave to the page, which the script keeps in memory, in one folder without a
/// name. Deleting one takes it out of memory; what becomes of the file it came from is the page's business.
class WebFiles final : public Files {
  public:
    [[nodiscard]] std::string ReadAll(const std::string& path, std::size_t most) override;
    void Delete(const std::string& path) override;
    [[nodiscard]] std::filesystem::path ProgramFolder() override { return {}; }
    /// There is no settings file.
    [[nodiscard]] std::size_t ReadSection(std::string_view section, std::span<char> buffer,
                                          const std::filesystem::path& file) override;
};

}  // namespace vento::platform
