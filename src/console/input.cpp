#include "console/input.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "console/failure.h"
#include "platform/native.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

constexpr std::size_t kLargestInput = std::size_t{1} << 30U;

}  // namespace

bool SameFile(std::string_view one, std::string_view other) {
    std::error_code noSuchFile;
    return std::filesystem::equivalent(PathFromUtf8(one), PathFromUtf8(other), noSuchFile);
}

std::string ReadStandardInput(const platform::Terminal& terminal) {
    constexpr std::size_t kPiece = 65536;
    std::string bytes;
    std::vector<char> piece(kPiece);
    while (const std::size_t count = terminal.ReadInput(piece)) {
        if (count > kLargestInput - bytes.size()) throw platform::FileTooLarge();
        bytes.append(piece.data(), count);
    }
    EndIfInterrupted(terminal);
    return bytes;
}

namespace {

std::string Read(const std::string& name, const auto& read) {
    try {
        return read();
    } catch (const platform::FileError& error) {
        throw Failure(kMissingInput, About(name, error));
    }
}

}  // namespace

std::string ReadFile(const std::string& path) {
    return Read(path, [&] { return platform::MakeNativeFiles()->ReadAll(path, kLargestInput); });
}

std::string ReadInput(const std::string& path, const platform::Terminal& terminal) {
    if (path != kStandardStream) return ReadFile(path);
    return Read(path, [&] { return ReadStandardInput(terminal); });
}

}  // namespace vento::console
