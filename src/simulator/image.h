#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "simulator/remote.h"
#include "storage/json.h"
#include "text/language.h"

namespace vento::simulator {

/// Which words a `memory` in JSON may hold.
enum class WordForm : std::uint8_t {
    firstByte,  ///< its first byte, the second being 52
    anyWord,    ///< that, or a list of both bytes
};

/// Reads an object of lists of words, each under the decimal offset of its first. Throws
/// storage::ContentError.
[[nodiscard]] WordRuns ReadWordRuns(const storage::JsonNode& node, WordForm form);

/// An image that could not be written; `Reason()` names the file too.
class ImageError : public ReasonedError {
  public:
    using ReasonedError::ReasonedError;
};

/// A file in which the contents of a remote live on between runs:
///
///   { "free": 112, "memory": { "256": [193, 194, [1, 7]] } }
///
/// `memory` has the runs of words that were written, by the offset of their first. A word is its first byte,
/// or both bytes where the second is not 52.
class Image {
  public:
    /// Gives `remote` what the file holds, if the file is there. `remote` has to outlive the image. Throws
    /// storage::ContentError if the file is no image, or its folder isn't there, and platform::FileError if
    /// it can't be read.
    Image(std::filesystem::path file, Remote& remote);

    /// Saves, and puts up with it if that fails.
    ~Image();

    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    Image(Image&&) = delete;
    Image& operator=(Image&&) = delete;

    /// Writes the file anew, whole or not at all, unless it holds all that the remote does. Throws
    /// ImageError.
    void Save();

  private:
    std::filesystem::path file_;
    Remote& remote_;
    std::string saved_;  ///< what the file holds, as this class would write it; empty for no file
};

}  // namespace vento::simulator
