#include "device/uhid_device.h"

#include <fcntl.h>
#include <linux/uhid.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace vento::device {
namespace {

namespace fs = std::filesystem;

constexpr const char* kKernel = "/dev/uhid";
constexpr std::string_view kName = "VENTO virtual transmitter";
constexpr std::uint16_t kUsbBus = 3;

/// A physical address that no other device has, in this process or another.
std::string NewPlace() {
    static unsigned last = 0;
    return "vento/" + std::to_string(::getpid()) + "/" + std::to_string(++last);
}

[[noreturn]] void Fail() {
    throw std::system_error(errno, std::generic_category(), kKernel);
}

platform::FileDescriptor OpenKernel() {
    platform::FileDescriptor kernel(::open(kKernel, O_RDWR | O_CLOEXEC | O_NONBLOCK));
    if (!kernel.IsOpen()) Fail();
    return kernel;
}

void Put(std::string_view text, std::span<__u8> field) {
    std::copy_n(text.begin(), std::min(text.size(), field.size() - 1), field.begin());
}

bool Tell(const platform::FileDescriptor& kernel, const uhid_event& event) {
    return ::write(kernel.Number(), &event, sizeof event) >= 0;
}

/// Answers a request for a feature report, on which a program waits.
void Refuse(const platform::FileDescriptor& kernel, const uhid_event& request) {
    uhid_event answer{};
    if (request.type == UHID_GET_REPORT) {
        answer.type = UHID_GET_REPORT_REPLY;
        answer.u.get_report_reply.id = request.u.get_report.id;
        answer.u.get_report_reply.err = EIO;
    } else {
        answer.type = UHID_SET_REPORT_REPLY;
        answer.u.set_report_reply.id = request.u.set_report.id;
        answer.u.set_report_reply.err = EIO;
    }
    Tell(kernel, answer);
}

bool HasLine(const fs::path& file, std::string_view wanted) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line == wanted) return true;
    }
    return false;
}

}  // namespace

UhidDevice::UhidDevice(platform::HidIdentity identity) : place_(NewPlace()), kernel_(OpenKernel()) {
    uhid_event event{};
    event.type = UHID_CREATE2;
    uhid_create2_req& request = event.u.create2;
    Put(kName, request.name);
    Put(place_, request.phys);
    request.bus = kUsbBus;
    request.vendor = identity.vendorId;
    request.product = identity.productId;
    request.rd_size = kReportDescriptor.size();
    std::ranges::copy(kReportDescriptor, request.rd_data);
    if (!Tell(kernel_, event)) Fail();
}

std::optional<std::string> UhidDevice::Place() const {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator("/sys/class/hidraw", error)) {
        const fs::path node = "/dev" / entry.path().filename();
        if (HasLine(entry.path() / "device/uevent", "HID_PHYS=" + place_) && fs::exists(node, error)) {
            return node.string();
        }
    }
    return std::nullopt;
}

std::optional<DeviceEvent> UhidDevice::NextEvent() {
    uhid_event event{};
    while (::read(kernel_.Number(), &event, sizeof event) > 0) {
        switch (event.type) {
            case UHID_CLOSE:
                return DeviceEvent{.kind = DeviceEvent::Kind::closed, .report = {}};
            case UHID_OUTPUT: {
                const std::size_t size = std::min<std::size_t>(event.u.output.size, UHID_DATA_MAX);
                return DeviceEvent{.kind = DeviceEvent::Kind::output,
                                   .report = {event.u.output.data, event.u.output.data + size}};
            }
            case UHID_GET_REPORT:
            case UHID_SET_REPORT:
                Refuse(kernel_, event);
                break;
            default:
                break;
        }
    }
    return std::nullopt;
}

bool UhidDevice::Send(std::span<const std::uint8_t> payload) {
    uhid_event event{};
    event.type = UHID_INPUT2;
    const std::size_t size = std::min<std::size_t>(payload.size(), UHID_DATA_MAX);
    event.u.input2.size = static_cast<__u16>(size);
    std::copy_n(payload.begin(), size, event.u.input2.data);
    Tell(kernel_, event);  // a program that has gone in the meantime is no one to be told
    return true;
}

}  // namespace vento::device
