#include "fuzzing.h"
#include "platform/linux/report_descriptor.h"
#include "platform/posix/files.h"

namespace vento::fuzzing {
namespace {

using platform::ParseReportDescriptor;

/// What is behind the beginning of a descriptor makes no report of it shorter.
void TryDescriptor(std::span<const std::uint8_t> bytes, std::size_t cut) {
    const auto whole = ParseReportDescriptor(bytes).lengths;
    const auto beginning = ParseReportDescriptor(bytes.first(std::min(cut, bytes.size()))).lengths;
    Require(beginning.input <= whole.input && beginning.output <= whole.output, "lengths only grow");
}

/// The settings: lines without controls of their own, each ended, and cut off where the buffer is too small.
void TrySettings(const std::string& text, std::size_t size) {
    std::vector<char> buffer(size + 2, 'x');
    std::vector<char> large(text.size() + 2, 'x');
    const std::size_t count = platform::CopySection("message", buffer, text);
    const std::size_t all = platform::CopySection("message", large, text);
    const bool isCut = all > buffer.size() - 1;
    Require(count == (isCut ? buffer.size() - 2 : all), "what does not fit is cut off");
    Require(buffer[count] == '\0' && (isCut || count == 0 || buffer[count - 1] == '\0'), "and is ended");
    Require(isCut || std::equal(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count),
                                large.begin()),
            "and what fits is the same in any buffer");
}

}  // namespace
}  // namespace vento::fuzzing

/// What the system hands in: report descriptors, the settings file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vento::fuzzing;
    FuzzedDataProvider provider(data, size);
    const auto kind = provider.ConsumeIntegral<std::uint8_t>();
    const auto detail = provider.ConsumeIntegral<std::uint8_t>();
    if (kind % 2 == 0) {
        TrySettings(provider.ConsumeRemainingBytesAsString(), detail);
    } else {
        TryDescriptor(provider.ConsumeRemainingBytes<std::uint8_t>(), detail);
    }
    return 0;
}
