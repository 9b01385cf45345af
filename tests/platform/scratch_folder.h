#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace vento::testing {

/// A folder of a test's own, which goes with it.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vento-XXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ScratchFolder(ScratchFolder&&) = delete;
    ScratchFolder& operator=(ScratchFolder&&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

    /// Returns the path of the file.
    [[nodiscard]] std::string Write(std::string_view name, std::string_view content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
        return (path_ / name).string();
    }

  private:
    std::filesystem::path path_;
};

}  // namespace vento::testing
