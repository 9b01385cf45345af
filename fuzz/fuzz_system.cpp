#include "fuzzing.h"
#include "platform/linux/hidraw_host.h"
#include "platform/linux/report_descriptor.h"
#include "platform/posix/files.h"

namespace vento::fuzzing {
namespace {

namespace fs = std::filesystem;
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

/// A folder of the kernel's with any names in it.
void TryNames(FuzzedDataProvider& data) {
    const fs::path classes = Folder() / "class";
    fs::remove_all(classes);
    fs::create_directory(classes);
    std::size_t entries = 0;
    for (int i = data.ConsumeIntegralInRange(1, 3); i > 0; --i) {
        std::string node = (data.ConsumeBool() ? "hidraw" : "") + data.ConsumeRandomLengthString(12);
        std::string target = data.ConsumeBool() ? "0003:2B11:0001.0001" : data.ConsumeRandomLengthString(40);
        std::ranges::replace_if(
            node, [](char each) { return each == '/' || each == '\0'; }, '_');
        std::erase(target, '\0');
        std::error_code error;
        if (fs::create_directory(classes / node, error)) ++entries;
        if (!target.empty()) fs::create_symlink(target, classes / node / "device", error);
    }
    platform::HidrawHost host(Folder().Path("dev"), classes.string());
    std::vector<std::size_t> numbers;
    host.Search([&](std::string_view path) {
        const std::string number(path.substr(path.rfind("hidraw") + 6));
        numbers.push_back(std::stoul(number));
        Require(fs::exists(classes / ("hidraw" + number)) || number.size() < 4, "what is listed is there");
        const auto answer = host.Open(path, [](platform::HidIdentity) { return true; });
        Require(answer.outcome != platform::OpenOutcome::opened, "and has no node that opens");
        return true;
    });
    Require(numbers.size() <= entries && std::ranges::is_sorted(numbers), "each once, in order");
    Require(host.Detect([](platform::HidIdentity) { return true; }) == platform::Presence::absent,
            "none is there");
}

}  // namespace
}  // namespace vento::fuzzing

/// What the system hands in: names in its folders, report descriptors, the settings file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vento::fuzzing;
    FuzzedDataProvider provider(data, size);
    const auto kind = provider.ConsumeIntegral<std::uint8_t>();
    const auto detail = provider.ConsumeIntegral<std::uint8_t>();
    if (kind % 16 == 0) {
        TryNames(provider);
    } else if (kind % 2 == 0) {
        TrySettings(provider.ConsumeRemainingBytesAsString(), detail);
    } else {
        TryDescriptor(provider.ConsumeRemainingBytes<std::uint8_t>(), detail);
    }
    return 0;
}
