#include "simulator/text_file.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#include "platform/files.h"
#include "simulator/replacement.h"
#include "simulator/scenario_error.h"

namespace vento::simulator {

namespace fs = std::filesystem;

namespace {

/// The error that the last failed file operation left behind.
[[noreturn]] void ThrowLastError() {
    const int error = errno != 0 ? errno : EIO;
    throw platform::FileError(std::generic_category().message(error));
}

void WriteWhole(const fs::path& file, std::string_view text) {
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream) ThrowLastError();
}

}  // namespace

std::string ReadText(const fs::path& file) {
    std::error_code unknown;
    // What is no regular file may never end, or hold the program up.
    const fs::file_status status = fs::status(file, unknown);
    if (fs::is_directory(status)) throw platform::FileError("Is a directory");
    if (fs::is_other(status)) throw platform::FileError("Not a regular file");
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) ThrowLastError();
    const std::uintmax_t size = fs::file_size(file, unknown);
    if (unknown) throw platform::FileError(unknown.message());
    if (size > kLargestText) {
        throw ScenarioError("expected a text of " + std::to_string(kLargestText) + " bytes at the most");
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad()) ThrowLastError();
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

void ReplaceText(const fs::path& file, std::string_view text) {
    try {
        Replacement replacement(file);
        WriteWhole(replacement.Fresh(), text);
        replacement.TakePlace();
    } catch (const fs::filesystem_error& error) {
        throw platform::FileError(error.code().message());
    }
}

std::string Utf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path PathFromUtf8(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

}  // namespace vento::simulator
