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

std::string ReadInput(const std::string& path, const platform::Terminal& terminal) {
    try {
        return path == kStandardStream ? ReadStandardInput(terminal)
                                       : platform::MakeNativeFiles()->ReadAll(path, kLargestInput);
    } catch (const platform::FileError& error) {
        throw Failure(kMissingInput, About(path, error));
    }
}

}  // namespace vento::console
