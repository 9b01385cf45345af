#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// HE3, a container for bytes: one static Huffman code for a whole buffer, its code table in front and a
/// checksum of one byte. The class `clsHuffman` writes and reads it. `docs/he3.md` describes the container.
namespace vento::codec {

// What is declared here is what the shared library offers.
#ifdef __ELF__
#pragma GCC visibility push(default)
#endif

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

/// There is not enough memory for what a call needs.
class MemoryError : public std::bad_alloc {
  public:
    [[nodiscard]] const char* what() const noexcept override { return "There is not enough memory for this"; }
};

/// A key: rows of two numbers, from 0 to 255 each where they come to be used, 12 rows at least.
using KeyArray = std::vector<std::array<std::int64_t, 2>>;

/// What a decoding gives.
struct Decoded {
    std::vector<std::uint8_t> bytes;
    /// The bytes were not Huffman-coded: the container is a stored one, or there is none and `bytes` are
    /// those that were to be decoded.
    bool uncoded = false;
};

/// The same for bytes that have gone into a buffer of the caller's.
struct DecodedSize {
    std::size_t size = 0;
    bool uncoded = false;
};

enum class Form {
    /// No container.
    foreign,
    /// The source bytes as they are, behind four bytes that say so.
    stored,
    coded
};

/// What a container tells about itself without being decoded.
struct ContainerInfo {
    Form form = Form::foreign;
    /// Bytes of the whole.
    std::uint64_t containerSize = 0;
    /// Bytes that come out: of a coded container what its header claims, which the decoding may fall short
    /// of.
    std::uint64_t sourceLength = 0;

    // What follows is 0 unless the form is the coded one.

    /// The exclusive or of all source bytes.
    std::uint8_t checksum = 0;
    /// How many byte values have a code, and the lengths of the shortest and the longest one in bits.
    unsigned symbols = 0;
    unsigned shortestCode = 0;
    unsigned longestCode = 0;
    /// Where the coded data begin; they go up to the end.
    std::uint64_t dataOffset = 0;
};

/// The codec. It keeps nothing from one call to the next, so that one instance may serve any number of calls
/// one after the other, and two instances may work at the same time.
///
/// Texts are UTF-8. Their bytes are those of Windows-1252, whose five unassigned values stand for the control
/// characters of the same number, so that every byte has its character. A character outside it becomes "?".
/// Paths are UTF-8.
///
/// All operations throw RangeError, OverflowError and MemoryError, those that decode also RaisedError; the
/// file operations throw std::filesystem::filesystem_error for a file that cannot be opened, read, written or
/// deleted. Sources and containers are at most 2,147,483,647 bytes long; what is longer is refused before
/// anything is read.
///
/// While a call lasts, its handler must leave alone what the call was given: the bytes behind a span, the
/// buffer for the result, the key, the texts. The array of DecodeFile is not used before the decoding is
/// over.
class clsHuffman {
  public:
    /// Is told how far a call has come, in per cent, on the caller's thread and within the call. What the
    /// handler leaves in `procent` is what the next percentage is compared with: it is told only if it
    /// differs. What it throws ends the call and passes through it; nothing has been written then.
    std::function<void(std::int16_t& procent)> Progress;

    /// A container of the bytes of `sourceFile`. Throws RaisedError if there is no such file.
    [[nodiscard]] std::vector<std::uint8_t> EncodeFile(const std::string& sourceFile) const;

    /// Makes `destFile` such a container. Both paths may name the same file. A regular file that `destFile`
    /// names, or leads to as a link, is replaced; a character device is written to; anything else is left
    /// alone, with an error.
    void EncodeFile(const std::string& sourceFile, const std::string& destFile) const;

    /// Decodes `sourceFile` into `byteArray`, and into `destFile` too if there is one, as EncodeFile writes
    /// it. Both paths may name the same file. True if the bytes were not Huffman-coded: a stored container,
    /// whose payload is the result, or a file that is no container, which is its own result. After an error
    /// of decoding `byteArray` holds the bytes of the file and `destFile` is untouched.
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

    /// A container of `source`. The key has the same effect as with texts.
    [[nodiscard]] std::vector<std::uint8_t> EncodeBytes(std::span<const std::uint8_t> source,
                                                        const KeyArray* codeCript = nullptr) const;

    /// Puts the container into the beginning of `container` and returns its size. Throws RangeError, before
    /// anything is written, if there is not enough room; EncodeBound is always enough. The two must not
    /// overlap.
    std::size_t EncodeBytes(std::span<const std::uint8_t> source, std::span<std::uint8_t> container,
                            const KeyArray* codeCript = nullptr) const;

    /// No source of so many bytes, with a key or without, has a container of more bytes than this.
    [[nodiscard]] static std::size_t EncodeBound(std::size_t sourceLength);

    /// What is in `container`. A container with source length 0 gives back itself.
    [[nodiscard]] Decoded DecodeBytes(std::span<const std::uint8_t> container,
                                      KeyArray* codeCript = nullptr) const;

    /// Puts what is in `container` into the beginning of `decoded`. Throws RangeError if there is not enough
    /// room; DecodeBound is always enough. After an error the content of `decoded` does not matter. The two
    /// must not overlap.
    DecodedSize DecodeBytes(std::span<const std::uint8_t> container, std::span<std::uint8_t> decoded,
                            KeyArray* codeCript = nullptr) const;

    /// So many bytes come out of `container` at the most, however it is decoded. Only its first bytes are
    /// looked at. Throws RangeError and RaisedError.
    [[nodiscard]] static std::size_t DecodeBound(std::span<const std::uint8_t> container);

    /// What stands in the header. That of a keyed container can be read with its key alone. Throws
    /// RangeError, OverflowError and RaisedError.
    [[nodiscard]] static ContainerInfo Info(std::span<const std::uint8_t> container,
                                            const KeyArray* codeCript = nullptr);

    /// The same of a file, of which the header alone is read.
    [[nodiscard]] static ContainerInfo FileInfo(const std::string& file, const KeyArray* codeCript = nullptr);
};

#ifdef __ELF__
#pragma GCC visibility pop
#endif

}  // namespace vento::codec
