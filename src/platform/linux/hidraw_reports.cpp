#include "platform/linux/hidraw_reports.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

namespace vento::platform {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kReadBound{1};
/// How long a node may refuse a report for want of room; the transfer itself is bounded by the kernel.
constexpr std::chrono::seconds kWriteBound{1};

/// True when the node is ready for what `events` names; false when time is up, or when the device has gone.
bool WaitUntilReady(int node, short events, SteadyClock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
        pollfd waiting{.fd = node, .events = events, .revents = 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(std::max(left.count(), std::int64_t{0})));
        // A report that came before the device went is still there to be read: this bit outweighs the others.
        if (ready > 0) return (waiting.revents & events) != 0;
        if (ready == 0 || errno != EINTR) return false;
    }
}

/// Whether a transfer that failed may be tried once more: at once after a signal, else when the node is
/// ready.
bool MayRepeat(int error, int node, short events, SteadyClock::time_point deadline) {
    if (SteadyClock::now() >= deadline) return false;
    return error == EINTR || (error == EAGAIN && WaitUntilReady(node, events, deadline));
}

}  // namespace

bool WriteWholeReport(int node, const Report& report) {
    const auto deadline = SteadyClock::now() + kWriteBound;
    for (;;) {
        const ssize_t written = ::write(node, report.data(), report.size());
        if (written >= 0) return written == static_cast<ssize_t>(report.size());
        if (!MayRepeat(errno, node, POLLOUT, deadline)) return false;
    }
}

bool ReadWholeReport(int node, Report& report) {
    const auto deadline = SteadyClock::now() + kReadBound;
    if (!WaitUntilReady(node, POLLIN, deadline)) return false;
    for (;;) {
        // One byte more than a payload: the kernel cuts a longer report to the room that it is given.
        std::array<std::uint8_t, kReportPayload + 1> payload{};
        const ssize_t count = ::read(node, payload.data(), payload.size());
        if (count >= 0) {
            if (count != kReportPayload) return false;
            report[0] = 0;
            std::copy_n(payload.begin(), kReportPayload, report.begin() + 1);
            return true;
        }
        if (!MayRepeat(errno, node, POLLIN, deadline)) return false;
    }
}

}  // namespace vento::platform
