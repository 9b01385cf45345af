#include "platform/linux/hidraw_host.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/hidraw.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <span>

#include "platform/linux/node_presence.h"
#include "platform/linux/report_descriptor.h"
#include "platform/posix/file_descriptor.h"

namespace vento::platform {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kReadBound{1};
constexpr std::chrono::seconds kWriteBound{1};
/// How long an open waits for a write that was given up and is still in the kernel.
constexpr std::chrono::seconds kOpenBound{1};

/// The numbers of hidraw nodes; the kernel hands out those from 0 to 63.
using HidrawNumbers = std::bitset<256>;

/// The number that `digits` is as a whole.
template <class Number>
std::optional<Number> ParseWhole(std::string_view digits, int base) {
    Number number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, number, base);
    if (error != std::errc{} || rest != end) return std::nullopt;
    return number;
}

void AddNumber(std::string_view name, HidrawNumbers& numbers) {
    constexpr std::string_view kPrefix = "hidraw";
    if (!name.starts_with(kPrefix)) return;
    const auto number = ParseWhole<std::size_t>(name.substr(kPrefix.size()), 10);
    if (number && *number < numbers.size()) numbers.set(*number);
}

/// Every "hidrawNUMBER" that the folder holds. A folder that can't be read holds none.
HidrawNumbers ListHidraw(const char* folder) {
    HidrawNumbers numbers;
    const FileDescriptor list(::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!list.IsOpen()) return numbers;
    // opendir would take its buffer from the heap, for each frame anew.
    alignas(dirent64) std::array<char, 4096> entries{};
    for (;;) {
        const ssize_t filled = ::getdents64(list.Number(), entries.data(), entries.size());
        if (filled <= 0) return numbers;
        for (std::size_t at = 0; at < static_cast<std::size_t>(filled);) {
            const auto* entry = reinterpret_cast<const dirent64*>(&entries[at]);
            AddNumber(entry->d_name, numbers);
            at += entry->d_reclen;
        }
    }
}

/// The ids in the name that the kernel gives a HID device, "BUS:VENDOR:PRODUCT.INSTANCE" in hexadecimal
/// digits, at the end of a path; nothing if the path ends otherwise.
std::optional<HidIdentity> IdentityInPath(std::string_view path) {
    constexpr std::size_t kIds = 5;        // "BUS0:" stands before them
    constexpr std::size_t kInstance = 14;  // "BUS0:VEND:PROD" stands before it
    const std::string_view name = path.substr(path.find_last_of('/') + 1);
    if (name.size() <= kInstance || name[4] != ':' || name[9] != ':' || name[kInstance] != '.') {
        return std::nullopt;
    }
    const auto vendorId = ParseWhole<std::uint16_t>(name.substr(kIds, 4), 16);
    const auto productId = ParseWhole<std::uint16_t>(name.substr(kIds + 5, 4), 16);
    if (!vendorId || !productId) return std::nullopt;
    return HidIdentity{*vendorId, *productId};
}

OpenOutcome OutcomeFor(int error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return OpenOutcome::forbidden;
        case EBUSY:
            return OpenOutcome::busy;
        case EWOULDBLOCK:  // of the lock
            return OpenOutcome::held;
        case ENOSPC:
            return OpenOutcome::noBandwidth;
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

/// 0 when the node is ready for what `events` names; else the reason: time is up, or the device has gone.
int WaitUntilReady(int node, short events, SteadyClock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
        pollfd waiting{.fd = node, .events = events, .revents = 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(std::max(left.count(), std::int64_t{0})));
        // A report that came before the device went is still there to be read: this bit outweighs the others.
        if (ready > 0) return (waiting.revents & events) != 0 ? 0 : ENODEV;
        if (ready == 0) return ETIMEDOUT;
        if (errno != EINTR) return errno;
    }
}

/// Calls `transfer` until it has moved something, or can't: at once again after a signal, when the node is
/// ready after EAGAIN.
template <class Transfer>
ReportTransfer Repeat(int node, short events, SteadyClock::time_point deadline, std::size_t whole,
                      Transfer transfer) {
    for (;;) {
        const ssize_t count = transfer();
        if (count >= 0) {
            const auto bytes = static_cast<std::size_t>(count);
            return {.whole = bytes == whole, .error = 0, .bytes = bytes};
        }
        int error = errno;
        if (error == EAGAIN) error = WaitUntilReady(node, events, deadline);
        const bool mayRepeat = (error == 0 || error == EINTR) && SteadyClock::now() < deadline;
        if (!mayRepeat) return {.whole = false, .error = error != 0 ? error : ETIMEDOUT, .bytes = 0};
    }
}

}  // namespace

HidrawHost::HidrawHost(std::string_view nodeFolder, std::string_view classFolder)
    : classFolder_(classFolder), nodePrefix_(std::string(nodeFolder) + "/hidraw") {}

void HidrawHost::Search(const std::function<bool(std::string_view path)>& visit) {
    const HidrawNumbers present = ListHidraw(classFolder_.c_str());
    for (std::size_t number = 0; number < present.size(); ++number) {
        if (!present.test(number)) continue;
        std::array<char, 20> digits{};
        const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        path_.assign(nodePrefix_).append(digits.data(), static_cast<std::size_t>(end - digits.data()));
        if (!visit(path_)) return;
    }
}

std::shared_ptr<Conversation> HidrawHost::Converse() {
    std::shared_ptr<HidrawHold> hold = hold_.lock();
    if (!hold) {
        hold = std::make_shared<HidrawHold>(writer_);
        hold_ = hold;
    }
    return hold;
}

OpenAnswer HidrawHost::Open(std::string_view path, Wanted wanted) {
    if (!path.starts_with(nodePrefix_)) return {};
    const std::string_view number = path.substr(nodePrefix_.size());
    const std::optional<HidIdentity> listed = ListedIdentity(number);
    if (!listed) return {};
    if (!wanted(*listed)) return {.outcome = OpenOutcome::foreign, .identity = listed};
    const auto fail = [&](int error) {
        return OpenAnswer{.outcome = OutcomeFor(error), .identity = listed, .error = error};
    };

    if (!writer_->AwaitKernel(SteadyClock::now() + kOpenBound)) return fail(ETIMEDOUT);
    const std::shared_ptr<HidrawHold> hold = hold_.lock();
    if (!hold || !hold->Holds(path)) {
        if (IsSystemInput(number)) return {.outcome = OpenOutcome::foreign, .identity = listed};
        if (hold) {
            if (const int error = hold->Take(path); error != 0) return fail(error);
        }
    }
    FileDescriptor node = OpenNode(std::string(path).c_str());
    if (!node.IsOpen()) return fail(errno);
    if (IdentityOf(node) != listed) return {.outcome = OpenOutcome::failed, .identity = listed};
    // Who only looks asks whether the lock could be had, and lets others look at the same time.
    if (!hold) {
        if (const int error = TryToLock(node, LOCK_SH); error != 0) return fail(error);
    }
    return {.outcome = OpenOutcome::opened, .identity = listed, .handle = node.Release()};
}

void HidrawHost::SetClassPath(std::string_view number, std::string_view rest) {
    classPath_.assign(classFolder_).append("/hidraw").append(number).append("/device").append(rest);
}

Presence HidrawHost::Detect(Wanted wanted) {
    Presence found = Presence::absent;
    Search([&](std::string_view path) {
        const std::string_view number = path.substr(nodePrefix_.size());
        const std::optional<HidIdentity> listed = ListedIdentity(number);
        if (!listed || !wanted(*listed) || IsSystemInput(number)) return true;
        const Presence one = PresenceOfNode(std::string(path).c_str());
        if (found == Presence::absent || one == Presence::ready) found = one;
        return found != Presence::ready;
    });
    return found;
}

/// The ids that sysfs has for a node, in the name of the device that its entry leads to.
std::optional<HidIdentity> HidrawHost::ListedIdentity(std::string_view number) {
    SetClassPath(number, "");
    std::array<char, 512> target{};
    const ssize_t length = ::readlink(classPath_.c_str(), target.data(), target.size());
    if (length <= 0) return std::nullopt;
    return IdentityInPath({target.data(), static_cast<std::size_t>(length)});
}

/// Told without an open, which would wake the device and let its keystrokes in.
bool HidrawHost::IsSystemInput(std::string_view number) {
    SetClassPath(number, "/report_descriptor");
    const FileDescriptor file(::open(classPath_.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen()) return false;
    std::array<std::uint8_t, HID_MAX_DESCRIPTOR_SIZE> bytes{};
    const ssize_t size = ::read(file.Number(), bytes.data(), bytes.size());
    return size > 0 &&
           ParseReportDescriptor(std::span(bytes).first(static_cast<std::size_t>(size))).isSystemInput;
}

std::optional<ReportLengths> HidrawHost::Lengths(HidHandle device) {
    const auto node = static_cast<int>(device);
    hidraw_report_descriptor descriptor{};
    int size = 0;
    if (::ioctl(node, HIDIOCGRDESCSIZE, &size) < 0 || size < 0) return std::nullopt;
    descriptor.size = static_cast<__u32>(size);
    if (::ioctl(node, HIDIOCGRDESC, &descriptor) < 0) return std::nullopt;
    return ParseReportDescriptor(std::span(descriptor.value).first(descriptor.size)).lengths;
}

ReportTransfer HidrawHost::Write(HidHandle device, const Report& report) {
    const auto node = static_cast<int>(device);
    const auto deadline = SteadyClock::now() + kWriteBound;
    return Repeat(node, POLLOUT, deadline, report.size(),
                  [&] { return writer_->Write(node, report, deadline); });
}

ReportTransfer HidrawHost::Read(HidHandle device, Report& report) {
    const auto node = static_cast<int>(device);
    const auto deadline = SteadyClock::now() + kReadBound;
    if (const int error = WaitUntilReady(node, POLLIN, deadline); error != 0) return {.error = error};
    // One byte more than a payload: the kernel cuts a longer report to the room that it is given.
    std::array<std::uint8_t, kReportPayload + 1> payload{};
    const ReportTransfer transfer = Repeat(node, POLLIN, deadline, kReportPayload,
                                           [&] { return ::read(node, payload.data(), payload.size()); });
    if (transfer.whole) {
        report[0] = 0;
        std::copy_n(payload.begin(), kReportPayload, report.begin() + 1);
    }
    return transfer;
}

void HidrawHost::Cancel(HidHandle /*device*/) {}

void HidrawHost::Close(HidHandle device) {
    writer_->Close(static_cast<int>(device));
}

}  // namespace vento::platform
