#include "console/trace_file.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "console/failure.h"
#include "platform/file_error.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

Sentence Describe(const std::string& path) {
    return Fill({"La traccia {0} non può essere scritta: {1}.", "The trace {0} can't be written: {1}."},
                {path, platform::SystemReason({errno, std::generic_category()})});
}

}  // namespace

TraceFile::TraceFile(const std::string& path, platform::Clock& clock)
    : path_(path), trace_([this](std::string_view line) { Write(line); }, clock) {
    errno = 0;
    stream_.open(PathFromUtf8(path), std::ios::binary | std::ios::trunc);
    if (!stream_) throw Failure(kFailedOutput, Describe(path));
}

void TraceFile::Write(std::string_view line) {
    if (problem_) return;
    errno = 0;
    stream_ << line << std::flush;
    if (!stream_) problem_ = Describe(path_);
}

}  // namespace vento::console
