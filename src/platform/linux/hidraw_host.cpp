#include "platform/linux/hidraw_host.h"

#include <fcntl.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>

#include "platform/linux/file_descriptor.h"
#include "platform/linux/hidraw_advice.h"
#include "platform/linux/hidraw_reports.h"

namespace vento::platform {
namespace {

void AppendNumber(std::string& path, std::size_t number) {
    std::array<char, 20> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    path.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

FileDescriptor OpenNode(const char* path) {
    for (;;) {
        FileDescriptor node(::open(path, O_RDWR | O_CLOEXEC | O_NONBLOCK));
        if (node.IsOpen() || errno != EINTR) return node;
    }
}

OpenOutcome OutcomeOf(int error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return OpenOutcome::forbidden;
        case EBUSY:
            return OpenOutcome::busy;
        default:
            return OpenOutcome::failed;
    }
}

/// Who the device behind an open node is. Its number may have gone to another device since it was listed.
std::optional<HidIdentity> IdentityOf(const FileDescriptor& node) {
    hidraw_devinfo info{};
    if (::ioctl(node.Number(), HIDIOCGRAWINFO, &info) < 0) return std::nullopt;
    return HidIdentity{static_cast<std::uint16_t>(info.vendor), static_cast<std::uint16_t>(info.product)};
}

}  // namespace

HidrawHost::HidrawHost(std::string_view nodeFolder, std::string_view classFolder)
    : classFolder_(classFolder), nodePrefix_(std::string(nodeFolder) + "/hidraw") {}

void HidrawHost::BeginSearch() {
    present_.reset();
    next_ = 0;
    ListHidraw(classFolder_.c_str(), present_);
}

bool HidrawHost::NextInterface() {
    while (next_ < present_.size()) {
        current_ = next_++;
        if (present_.test(current_)) return true;
    }
    return false;
}

std::string HidrawHost::InterfaceName() const {
    std::string name = nodePrefix_;
    AppendNumber(name, current_);
    return name;
}

OpenAnswer HidrawHost::OpenInterface(bool (*wanted)(HidIdentity)) {
    const std::optional<HidIdentity> listed = ListedIdentity();
    if (!listed) return {};
    if (!wanted(*listed)) return {.outcome = OpenOutcome::foreign, .identity = listed};

    path_ = nodePrefix_;
    AppendNumber(path_, current_);
    FileDescriptor node = OpenNode(path_.c_str());
    if (!node.IsOpen()) return {.outcome = OutcomeOf(errno), .identity = listed};
    if (IdentityOf(node) != listed) return {.outcome = OpenOutcome::failed, .identity = listed};
    return {.outcome = OpenOutcome::opened, .identity = listed, .handle = node.Release()};
}

/// The ids that sysfs has for the current interface, in the name of the device that its entry leads to.
std::optional<HidIdentity> HidrawHost::ListedIdentity() {
    path_ = classFolder_;
    path_ += "/hidraw";
    AppendNumber(path_, current_);
    path_ += "/device";
    std::array<char, 512> target{};
    const ssize_t length = ::readlink(path_.c_str(), target.data(), target.size());
    if (length <= 0) return std::nullopt;
    return IdentityInPath({target.data(), static_cast<std::size_t>(length)});
}

void HidrawHost::EndSearch() {
    present_.reset();
}

bool HidrawHost::WriteReport(HidHandle device, const Report& report) {
    return WriteWholeReport(static_cast<int>(device), report);
}

bool HidrawHost::ReadReport(HidHandle device, Report& report) {
    return ReadWholeReport(static_cast<int>(device), report);
}

void HidrawHost::Cancel(HidHandle /*device*/) {}

void HidrawHost::Close(HidHandle device) {
    const FileDescriptor closing(static_cast<int>(device));
}

std::string HidrawHost::Advice(OpenOutcome outcome, Language language) const {
    return HidrawAdvice(outcome, language);
}

}  // namespace vento::platform
