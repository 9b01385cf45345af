#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// HE3, a container for bytes: one static Huffman code for a whole buffer, its code table in front and a
/// checksum of one byte. The class `clsHuffman` writes and reads it. `docs/he3.md` describes the container.
namespace vento::codec {

/// What the codec raises when it can say what is wrong with the data or the call.
class RaisedError : public std::runtime_error {
  public:
    RaisedError(std::string source, const std::string& description)
        : std::runtime_error(description), source_(std::move(source)) {}

    [[nodiscard]] static std::uint32_t Number() { return 0x80040000; }
    [[nodiscard]] const std::string& Source() const { return source_; }
    [[nodiscard]] std::string Description() const { return what(); }

  private:
    std::string source_;
};

/// Something points outside what it points into: a table that runs past the end of the container, a key with
/// too few rows, data that do not fit their code.
class RangeError : public std::out_of_range {
  public:
    using std::out_of_range::out_of_range;
};

/// A number does not fit the field that it belongs in.
class OverflowError : public std::overflow_error {
  public:
    using std::overflow_error::overflow_error;
};

/// A key: rows of two numbers, from 0 to 255 each where they come to be used, 12 rows at least.
using KeyArray = std::vector<std::array<std::int64_t, 2>>;

/// The codec. It keeps nothing from one call to the next, so that one instance may serve any number of calls
/// one after the other, and two instances may work at the same time.
///
/// Texts are UTF-8. Their bytes are those of Windows-1252, whose five unassigned values stand for the control
/// characters of the same number, so that every byte has its character. A character outside it becomes "?".
/// Paths are UTF-8.
///
/// All four operations throw RangeError and OverflowError, those that decode also RaisedError; the file
/// operations throw std::filesystem::filesystem_error for a file that cannot be opened, read, written or
/// deleted. Sources are at most 2,147,483,647 bytes long.
class clsHuffman {
  public:
    /// Is told how far a call has come, in per cent, on the caller's thread and within the call. What the
    /// handler leaves in `procent` is what the next percentage is compared with: it is told only if it
    /// differs.
    std::function<void(std::int16_t& procent)> Progress;

    /// A container of the bytes of `sourceFile`. Throws RaisedError if there is no such file.
    [[nodiscard]] std::vector<std::uint8_t> EncodeFile(const std::string& sourceFile) const;

    /// Makes `destFile` such a container. Both paths may name the same file.
    void EncodeFile(const std::string& sourceFile, const std::string& destFile) const;

    /// Decodes `sourceFile` into `byteArray`, and into `destFile` too if there is one. Both paths may name
    /// the same file. True if the bytes were not Huffman-coded: a stored container, whose payload is the
    /// result, or a file that is no container, which is its own result. After an error of decoding
    /// `byteArray` holds the bytes of the file and `destFile` is untouched.
    bool DecodeFile(const std::string& sourceFile, std::vector<std::uint8_t>& byteArray,
                    const std::optional<std::string>& destFile = std::nullopt) const;

    /// The text in the container that `text` is, or `text` itself if it is none. The first 12 rows of
    /// `codeCript` are overwritten with what the container holds of its key; the others must be as they were
    /// at encoding, and as many.
    [[nodiscard]] std::string DecodeString(const std::string& text, KeyArray* codeCript = nullptr) const;

    /// A container of the characters of `text`, one character for each of its bytes. They include control
    /// characters and zeros.
    [[nodiscard]] std::string EncodeString(const std::string& text,
                                           const KeyArray* codeCript = nullptr) const;

  private:
    void Encode(std::vector<std::uint8_t>& byteArray, const KeyArray* codeCript) const;
    bool Decode(std::vector<std::uint8_t>& byteArray, KeyArray* codeCript) const;
    [[nodiscard]] static bool FileExists(const std::string& path);
};

}  // namespace vento::codec
