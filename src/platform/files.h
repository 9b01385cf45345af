#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "platform/file_error.h"

namespace vento::platform {

/// A file with more bytes than its reader takes.
class FileTooLarge : public FileError {
  public:
    FileTooLarge() : FileError(std::errc::file_too_large) {}
};

/// The few files that the system touches. Paths are UTF-8.
class Files {
  public:
    Files() = default;
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    Files(Files&&) = delete;
    Files& operator=(Files&&) = delete;
    virtual ~Files() = default;

    /// All bytes of a file that has `most` of them at the most. One that is larger is not read: FileTooLarge.
    /// Throws FileError for any other reason.
    [[nodiscard]] virtual std::string ReadAll(const std::string& path, std::size_t most) = 0;

    /// Deletes a regular file, unless it is write-protected, and nothing else. A failure is ignored.
    virtual void Delete(const std::string& path) = 0;

    /// The folder in which the running program lies.
    [[nodiscard]] virtual std::filesystem::path ProgramFolder() = 0;

    /// Fills `buffer` with the lines of a section of an initialisation file, each ended by a NUL and the
    /// whole by one more. Returns the number of characters without that last NUL. What does not fit is cut
    /// off, and the result is then `buffer.size() - 2`, which needs a buffer of two at least. 0 if there is
    /// no such file, no such section or nothing in it.
    [[nodiscard]] virtual std::size_t ReadSection(std::string_view section, std::span<char> buffer,
                                                  const std::filesystem::path& file) = 0;
};

}  // namespace vento::platform
