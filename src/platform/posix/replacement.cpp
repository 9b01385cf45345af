#include "platform/replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <utility>

#include "platform/posix/file_descriptor.h"

namespace vento::platform {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 07777;
constexpr mode_t kOwnersAlone = 0700;
constexpr mode_t kNewFile = 0666;  // as far as the umask leaves it

[[noreturn]] void ThrowLastError() {
    throw FileError(std::error_code(errno, std::generic_category()));
}

// The status of what is to be replaced; nothing if it is not there.
std::optional<struct stat> StatusOf(const fs::path& target) {
    struct stat status {};
    if (::stat(target.c_str(), &status) != 0) {
        if (errno == ENOENT) return std::nullopt;
        ThrowLastError();
    }
    if (S_ISDIR(status.st_mode)) throw FileError(std::errc::is_a_directory);
    if (!S_ISREG(status.st_mode)) throw FileError::NotRegular();
    return status;
}

// Its name does not grow with the target's, which may be as long as the system allows.
FileDescriptor CreateBeside(const fs::path& target, mode_t mode, fs::path& name) {
    std::random_device random;
    for (;;) {
        name = target.parent_path() / (".vento." + std::to_string(random()) + ".new");
        FileDescriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (file.IsOpen()) return file;
        if (errno != EEXIST && errno != EINTR) ThrowLastError();
    }
}

// The owner before the permissions, as a change of owner takes some of them away.
void BeLike(const struct stat& old, int file) {
    if (::fchown(file, old.st_uid, old.st_gid) != 0) {
        [[maybe_unused]] const int groupAlone = ::fchown(file, ::geteuid(), old.st_gid);
    }
    static_cast<void>(::fchmod(file, old.st_mode & kPermissions));
}

// A rename is on the disk once its folder is. Not every file system can flush a folder.
void FlushFolder(const fs::path& folder) {
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) static_cast<void>(::fsync(opened.Number()));
}

class PosixReplacement final : public Replacement {
  public:
    explicit PosixReplacement(fs::path target) : target_(std::move(target)) {
        const auto old = StatusOf(target_);
        file_ = CreateBeside(target_, old ? old->st_mode & kOwnersAlone : kNewFile, fresh_);
        if (old) BeLike(*old, file_.Number());
    }
    PosixReplacement(const PosixReplacement&) = delete;
    PosixReplacement& operator=(const PosixReplacement&) = delete;
    PosixReplacement(PosixReplacement&&) = delete;
    PosixReplacement& operator=(PosixReplacement&&) = delete;
    ~PosixReplacement() override {
        if (!fresh_.empty()) ::unlink(fresh_.c_str());
    }

    void Write(std::span<const std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::write(file_.Number(), bytes.data(), bytes.size());
            if (count >= 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                ThrowLastError();
            }
        }
    }

    void TakePlace() override {
        if (::fsync(file_.Number()) != 0 && errno != EINVAL) ThrowLastError();
        if (::rename(fresh_.c_str(), target_.c_str()) != 0) ThrowLastError();
        fresh_.clear();
        FlushFolder(target_.has_parent_path() ? target_.parent_path() : ".");
    }

  private:
    fs::path target_;
    fs::path fresh_;  // empty once it has taken its place
    FileDescriptor file_;
};

}  // namespace

std::unique_ptr<Replacement> ReplaceNatively(const fs::path& target) {
    std::error_code failed;
    const fs::path file = fs::weakly_canonical(target, failed);
    if (failed == std::errc::not_enough_memory) throw std::bad_alloc();  // as which it began
    if (failed) throw FileError(failed);
    return std::make_unique<PosixReplacement>(file);
}

}  // namespace vento::platform
