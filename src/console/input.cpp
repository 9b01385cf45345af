#include "console/input.h"

#include <filesystem>
#include <new>
#include <system_error>
#include <vector>

#include "console/failure.h"
#include "platform/native.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestInput = std::size_t{1} << 30U;

}  // namespace

bool SameFile(std::string_view one, std::string_view other) {
    const fs::path first = PathFromUtf8(one);
    const fs::path second = PathFromUtf8(other);
    try {
        const fs::path folder = fs::current_path();
        const bool exists = fs::exists(first);
        if (exists != fs::exists(second)) return false;
        return exists ? fs::equivalent(first, second)
                      : fs::weakly_canonical(folder / first) == fs::weakly_canonical(folder / second);
    } catch (const fs::filesystem_error& error) {
        if (error.code() == std::errc::not_enough_memory) throw std::bad_alloc();
        throw platform::FileError(error.code());
    }
}

void RequireOther(const std::string& output, std::string_view input, const Phrase& refusal) {
    try {
        if (!SameFile(output, input)) return;
    } catch (const platform::FileError& error) {
        throw Failure(kFailedOutput, Fill({"Non è certo che {0} non sia {1}: {2}.",
                                           "It is not certain that {0} is not {1}: {2}."},
                                          {output, input, error.Reason()}));
    }
    throw Failure(kWrongUsage, Fill(refusal, {input}));
}

std::string ReadStandardInput(const platform::Terminal& terminal) {
    constexpr std::size_t kAtOnce = 65536;
    std::string bytes;
    std::vector<char> piece(kAtOnce);
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
