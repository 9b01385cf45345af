#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace vento::test {

/// A folder of a test's own, which goes with it.
class ScratchFolder {
  public:
    ScratchFolder() { std::filesystem::create_directory(path_); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ScratchFolder(ScratchFolder&&) = delete;
    ScratchFolder& operator=(ScratchFolder&&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    /// The path of what has this UTF-8 name.
    [[nodiscard]] std::filesystem::path operator/(std::string_view name) const {
        return path_ / std::u8string(name.begin(), name.end());
    }

    /// The same as UTF-8.
    [[nodiscard]] std::string Path(std::string_view name) const {
        const std::u8string path = (*this / name).u8string();
        return {path.begin(), path.end()};
    }

    /// Returns the UTF-8 path of the file.
    [[nodiscard]] std::string Write(std::string_view name, std::string_view content) const {
        std::ofstream(*this / name, std::ios::binary) << content;
        return Path(name);
    }

    [[nodiscard]] std::string Read(std::string_view name) const {
        return {std::istreambuf_iterator<char>(std::ifstream(*this / name, std::ios::binary).rdbuf()), {}};
    }

  private:
    std::filesystem::path path_ =
        std::filesystem::temp_directory_path() / ("vento-" + std::to_string(std::random_device()()));
};

}  // namespace vento::test
