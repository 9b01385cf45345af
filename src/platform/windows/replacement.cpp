#include "platform/replacement.h"

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/windows/owned_handle.h"
#include "platform/windows/system.h"
#include "platform/windows/text.h"

namespace vento::platform {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kMostBytesAtOnce = DWORD{1} << 30U;

[[noreturn]] void ThrowLastError() {
    throw FileError(SystemError(::GetLastError()));
}

// Whether there is something to replace.
bool IsThere(const fs::path& target) {
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        if (::GetLastError() == ERROR_FILE_NOT_FOUND) return false;
        ThrowLastError();
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) throw FileError(std::errc::is_a_directory);
    std::error_code unknown;
    if (!fs::is_regular_file(target, unknown)) throw FileError::NotRegular();
    return true;
}

// The access list of a file, as CreateFileW takes it; empty if the system does not give it.
std::vector<std::uint8_t> AccessTo(const fs::path& file) {
    DWORD size = 0;
    ::GetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<std::uint8_t> access(size);
    if (size == 0 ||
        ::GetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, access.data(), size, &size) == 0) {
        return {};
    }
    return access;
}

// Its name does not grow with the target's, which may be as long as the system allows.
OwnedHandle CreateBeside(const fs::path& target, std::vector<std::uint8_t> access, fs::path& name) {
    SECURITY_ATTRIBUTES security{sizeof security, access.empty() ? nullptr : access.data(), FALSE};
    std::random_device random;
    for (;;) {
        name = target.parent_path() / (".vento." + std::to_string(random()) + ".new");
        OwnedHandle file(::CreateFileW(name.c_str(), GENERIC_WRITE, 0, &security, CREATE_NEW,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file) return file;
        if (::GetLastError() != ERROR_FILE_EXISTS) ThrowLastError();
    }
}

class WindowsReplacement final : public Replacement {
  public:
    explicit WindowsReplacement(fs::path target) : target_(std::move(target)) {
        file_ =
            CreateBeside(target_, IsThere(target_) ? AccessTo(target_) : std::vector<std::uint8_t>{}, fresh_);
    }
    WindowsReplacement(const WindowsReplacement&) = delete;
    WindowsReplacement& operator=(const WindowsReplacement&) = delete;
    WindowsReplacement(WindowsReplacement&&) = delete;
    WindowsReplacement& operator=(WindowsReplacement&&) = delete;
    ~WindowsReplacement() override {
        file_ = OwnedHandle();
        if (!fresh_.empty()) ::DeleteFileW(fresh_.c_str());
    }

    void Write(std::span<const std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            DWORD count = 0;
            const auto piece = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kMostBytesAtOnce));
            if (::WriteFile(file_.Get(), bytes.data(), piece, &count, nullptr) == 0) ThrowLastError();
            bytes = bytes.subspan(count);
        }
    }

    void TakePlace() override {
        if (::FlushFileBuffers(file_.Get()) == 0) ThrowLastError();
        file_ = OwnedHandle();
        if (::MoveFileExW(fresh_.c_str(), target_.c_str(),
                          MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
            ThrowLastError();
        }
        fresh_.clear();
    }

  private:
    fs::path target_;
    fs::path fresh_;  // empty once it has taken its place
    OwnedHandle file_;
};

}  // namespace

std::unique_ptr<Replacement> ReplaceNatively(const fs::path& target) {
    std::error_code failed;
    const fs::path file = fs::weakly_canonical(target, failed);
    if (failed) throw FileError(failed);
    return std::make_unique<WindowsReplacement>(file);
}

}  // namespace vento::platform
