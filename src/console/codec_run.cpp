#include "console/codec_run.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include "console/codec_errors.h"
#include "console/codec_key.h"
#include "console/failure.h"
#include "console/input.h"
#include "console/notices.h"
#include "platform/file_error.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 65536;
constexpr std::size_t kMostBytes = 2147483647;
using nlohmann::ordered_json;

std::optional<std::uintmax_t> SizeOf(const fs::path& file) {
    std::error_code unknown;
    const std::uintmax_t size = fs::file_size(file, unknown);
    return unknown ? std::nullopt : std::optional(size);
}

ordered_json BlankFields(const fs::path& source) {
    ordered_json fields = {{"result", nullptr},  {"error", nullptr},    {"events", ordered_json::array()},
                           {"bytesIn", nullptr}, {"bytesOut", nullptr}, {"key", nullptr}};
    if (const auto size = SizeOf(source)) fields["bytesIn"] = *size;
    return fields;
}

ordered_json ErrorFields(const char* kind, const std::exception& error) {
    return {{"kind", kind}, {"number", nullptr}, {"source", nullptr}, {"description", error.what()}};
}

ordered_json ErrorFields(const codec::RaisedError& error) {
    return {{"kind", "raised"},
            {"number", codec::RaisedError::Number()},
            {"source", error.Source()},
            {"description", error.Description()}};
}

// Throws Failure for each of the errors that the work may end in.
void Guard(const fs::path& source, const std::string& name, ordered_json& error,
           const std::function<void()>& work) {
    try {
        work();
    } catch (const codec::RaisedError& raised) {
        error = ErrorFields(raised);
        const bool unread = raised.Source() == "clsHuffman.EncodeFile()";
        throw Failure(unread ? kMissingInput : kUnusableInput, Labelled(name, DescribeCodecError(raised)));
    } catch (const codec::RangeError& range) {
        error = ErrorFields("range", range);
        throw Failure(kUnusableInput, Labelled(name, DescribeCodecError(range)));
    } catch (const codec::OverflowError& overflow) {
        error = ErrorFields("overflow", overflow);
        throw Failure(kUnusableInput, Labelled(name, DescribeCodecError(overflow)));
    } catch (const codec::MemoryError&) {
        throw Failure(kUnforeseen, Labelled(name, kNoMemory));
    } catch (const fs::filesystem_error& failed) {
        const bool reading = failed.path1() == source;
        throw Failure(reading ? kMissingInput : kFailedOutput,
                      About(Utf8FromPath(failed.path1()), platform::FileError(failed.code())));
    } catch (const platform::FileError& failed) {
        throw Failure(kMissingInput, About(name, failed));
    }
}

[[noreturn]] void Refuse(const fs::path& file, std::errc reason) {
    throw fs::filesystem_error("cannot read", file, std::make_error_code(reason));
}

// Nothing where the codec reads the file itself, whose size goes into `bytesIn`.
std::optional<std::vector<std::uint8_t>> BytesOf(const Console& console, ordered_json& bytesIn) {
    const std::string path = console.options.Argument(0);
    if (path == kStandardStream) {
        const std::string input = ReadStandardInput(console.terminal);
        return std::vector<std::uint8_t>(input.begin(), input.end());
    }
    const fs::path file = PathFromUtf8(path);
    const fs::file_status status = fs::status(file);
    if (!fs::exists(status)) Refuse(file, std::errc::no_such_file_or_directory);
    if (fs::is_directory(status)) Refuse(file, std::errc::is_a_directory);
    if (fs::is_regular_file(status)) bytesIn = fs::file_size(file);
    if (fs::is_regular_file(status) && bytesIn > 0) return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    std::vector<std::uint8_t> bytes;
    std::vector<char> piece(kPiece);
    while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())), stream.gcount() > 0) {
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + stream.gcount());
        EndIfInterrupted(console.terminal);
        if (bytes.size() > kMostBytes) throw codec::OverflowError("There are more than 2147483647 bytes");
    }
    if (!stream.eof()) Refuse(file, std::errc::io_error);
    return bytes;
}

}  // namespace

void RunCodec(const Console& console, Answer& answer, const std::function<void(const CodecTools&)>& work) {
    const fs::path source = PathFromUtf8(console.options.Argument(0));
    answer.fields = BlankFields(source);
    std::optional<codec::KeyArray> key;
    if (console.options.key) key = ReadKey(*console.options.key);

    codec::clsHuffman codec;
    codec.Progress = [&](std::int16_t& procent) {
        EndIfInterrupted(console.terminal);
        answer.fields["events"].push_back(procent);
        console.notices.ShowProgress({.caption = {}, .hint = {}, .fraction = procent / 100.0});
    };
    const auto finally = [&] {
        console.notices.ClearProgress();
        if (key) answer.fields["key"] = KeyFields(*key);
    };
    try {
        Guard(source, console.options.Argument(0), answer.fields["error"], [&] {
            const auto bytes = BytesOf(console, answer.fields["bytesIn"]);
            if (bytes) answer.fields["bytesIn"] = bytes->size();
            work({codec, key ? &*key : nullptr, bytes});
        });
    } catch (...) {
        finally();
        throw;
    } finally();
}

}  // namespace vento::console
