#include "platform/web/files.h"

#include <string>
#include <utility>
#include <vector>

#include "platform/native.h"
#include "platform/replacement.h"
#include "platform/web/script.h"

namespace vento::platform {
namespace {

class WebReplacement final : public Replacement {
  public:
    explicit WebReplacement(std::string path) : path_(std::move(path)) {}

    void Write(std::span<const std::uint8_t> bytes) override {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    }

    void TakePlace() override { script::FileWrite(path_.data(), path_.size(), bytes_.data(), bytes_.size()); }

  private:
    std::string path_;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace

std::string WebFiles::ReadAll(const std::string& path, std::size_t most) {
    const double size = script::FileSize(path.data(), path.size());
    if (size < 0) throw FileError(std::errc::no_such_file_or_directory);
    if (size > static_cast<double>(most)) throw FileTooLarge();
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (!script::FileRead(path.data(), path.size(), bytes.data())) throw FileError(std::errc::io_error);
    return bytes;
}

void WebFiles::Delete(const std::string& path) {
    script::FileDelete(path.data(), path.size());
}

std::size_t WebFiles::ReadSection(std::string_view /*section*/, std::span<char> buffer,
                                  const std::filesystem::path& /*file*/) {
    buffer[0] = '\0';
    return 0;
}

std::unique_ptr<Files> MakeNativeFiles() {
    return std::make_unique<WebFiles>();
}

std::filesystem::file_type NativeFileType(const std::filesystem::path& path) {
    using std::filesystem::file_type;
    const std::string& name = path.native();
    if (name == ".") return file_type::directory;
    return script::FileSize(name.data(), name.size()) < 0 ? file_type::not_found : file_type::regular;
}

std::unique_ptr<Replacement> ReplaceNatively(const std::filesystem::path& target) {
    return std::make_unique<WebReplacement>(target.native());
}

}  // namespace vento::platform
