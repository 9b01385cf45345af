#pragma once

#include <filesystem>

namespace vento::simulator {

/// A new file beside the one whose place it is to take: until it is whole, the old one stays as it is.
class Replacement {
  public:
    /// For `target`, which need not be there, or the file that it is a link to. Throws
    /// std::filesystem::filesystem_error if something is there that is no regular file.
    explicit Replacement(const std::filesystem::path& target);
    /// Removes what has not taken its place.
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    Replacement(Replacement&&) = delete;
    Replacement& operator=(Replacement&&) = delete;

    /// Where to write the new file. Nothing is there yet.
    [[nodiscard]] const std::filesystem::path& Fresh() const { return fresh_; }

    /// Puts the new file in place of the old one, with its permissions. Throws
    /// std::filesystem::filesystem_error.
    void TakePlace();

  private:
    std::filesystem::path target_;
    std::filesystem::path fresh_;
};

}  // namespace vento::simulator
