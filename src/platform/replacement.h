#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

#include "platform/file_error.h"

namespace vento::platform {

/// A file that is replaced by a new one, whole or not at all: the new one is written beside it, flushed to
/// the disk and then renamed. All operations throw FileError, and until `TakePlace` has ended the old file
/// stays as it was. What has not taken its place is removed with this object.
class Replacement {
  public:
    Replacement() = default;
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    Replacement(Replacement&&) = delete;
    Replacement& operator=(Replacement&&) = delete;
    virtual ~Replacement() = default;

    virtual void Write(std::span<const std::uint8_t> bytes) = 0;
    virtual void TakePlace() = 0;
};

/// Begins to replace `target`, or the file that it is a link to, which need not be there. Refuses what is no
/// regular file. The new file has the permissions of the old one from its creation on, and its owner where
/// the system allows.
[[nodiscard]] std::unique_ptr<Replacement> ReplaceNatively(const std::filesystem::path& target);

}  // namespace vento::platform
