// What one exchange with a HID device of the kernel takes, search and all: through VENTO's own back end,
// through the bare system calls that any road to the device needs, and through hidapi. Needs root and
// /dev/uhid.
//
//   hid_exchange_bench FOREIGN [option of Google Benchmark...]
//
// FOREIGN interfaces stand in front of the transmitter in every search.

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <hidapi/hidapi.h>
#include <linux/hidraw.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "allocations.h"
#include "device/uhid_device.h"
#include "platform/linux/hidraw_host.h"
#include "platform/posix/file_descriptor.h"
#include "usb/report_exchange.h"

namespace vento {
namespace {

using device::DeviceEvent;
using device::UhidDevice;
using platform::FileDescriptor;

constexpr platform::HidIdentity kTransmitter{1240, 1};
constexpr platform::HidIdentity kForeign{0x046D, 0xC31C};
constexpr std::array<std::uint8_t, 7> kFrame = {7, 'U', 1, 0, 1, 165, 1};

bool IsOurs(platform::HidIdentity identity) {
    return identity == kTransmitter;
}

// A process of its own, as the device is outside of this one: sends a report for each that it gets.
void AnswerForEver() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    UhidDevice device(kTransmitter);
    constexpr std::array<std::uint8_t, platform::kReportPayload> answer = {0, 165};
    for (;;) {
        pollfd waiting{.fd = device.Descriptor(), .events = POLLIN, .revents = 0};
        ::poll(&waiting, 1, -1);
        while (const auto event = device.NextEvent()) {
            if (event->kind == DeviceEvent::Kind::output && !device.Send(answer)) return;
        }
    }
}

void PlugForeign(std::vector<std::unique_ptr<UhidDevice>>& devices, std::size_t count) {
    using std::chrono_literals::operator""ms;
    while (devices.size() < count) {
        devices.push_back(std::make_unique<UhidDevice>(kForeign));
        while (!devices.back()->Place())
            std::this_thread::sleep_for(1ms);
    }
}

bool AwaitTransmitter() {
    using std::chrono_literals::operator""ms;
    platform::HidrawHost host;
    Link link(host, IsOurs);
    for (int attempt = 0; attempt < 2000; ++attempt) {
        if (LocateTransmitter(link).found) return true;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

void OwnBackEnd(benchmark::State& state) {
    platform::HidrawHost host;
    Link link(host, IsOurs);
    const auto exchange = [&] {
        std::array<std::uint8_t, 9> reply{};
        return ExchangeReports(link, kFrame, reply).reportsRead == 1;
    };
    bool good = exchange();
    const std::uint64_t before = bench::Allocations();
    for (auto _ : state)
        good = good && exchange();
    const auto allocations = static_cast<double>(bench::Allocations() - before);
    state.counters["allocations"] = allocations / static_cast<double>(state.iterations());
    if (!good) state.SkipWithError("an exchange failed");
}

// Every path is known beforehand, nothing is checked or parsed: only what the kernel must be asked.
class BareCalls {
  public:
    explicit BareCalls(std::size_t foreign) {
        for (std::size_t i = 0; i <= foreign; ++i) {
            links_.push_back("/sys/class/hidraw/hidraw" + std::to_string(i) + "/device");
        }
        node_ = "/dev/hidraw" + std::to_string(foreign);
    }

    [[nodiscard]] bool Exchange() {
        const FileDescriptor folder(::open("/sys/class/hidraw", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        while (::getdents64(folder.Number(), buffer_.data(), buffer_.size()) > 0) {
        }
        for (const std::string& link : links_) {
            if (::readlink(link.c_str(), buffer_.data(), buffer_.size()) <= 0) return false;
        }
        const FileDescriptor node(::open(node_.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
        hidraw_devinfo info{};
        ::ioctl(node.Number(), HIDIOCGRAWINFO, &info);
        if (::write(node.Number(), report_.data(), report_.size()) != 65) return false;
        pollfd waiting{.fd = node.Number(), .events = POLLIN, .revents = 0};
        ::poll(&waiting, 1, 1000);
        return ::read(node.Number(), buffer_.data(), 65) == 64;
    }

  private:
    std::vector<std::string> links_;
    std::string node_;
    platform::Report report_{0, 7, 'U', 1, 0, 1, 165, 1};
    alignas(dirent64) std::array<char, 4096> buffer_{};
};

bool HidapiExchange() {
    hid_device_info* const list = hid_enumerate(0, 0);
    hid_device* device = nullptr;
    for (const hid_device_info* each = list; each != nullptr && device == nullptr; each = each->next) {
        if (IsOurs({each->vendor_id, each->product_id})) device = hid_open_path(each->path);
    }
    hid_free_enumeration(list);
    if (device == nullptr) return false;
    constexpr platform::Report report{0, 7, 'U', 1, 0, 1, 165, 1};
    std::array<std::uint8_t, 65> reply{};
    const bool written = hid_write(device, report.data(), report.size()) == 65;
    const bool read = written && hid_read_timeout(device, reply.data(), reply.size(), 1000) == 64;
    hid_close(device);
    return read;
}

template <class Exchange>
void Repeat(benchmark::State& state, Exchange exchange) {
    for (auto _ : state) {
        if (!exchange()) return state.SkipWithError("an exchange failed");
    }
}

void Register(std::size_t foreign) {
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("own", OwnBackEnd)->UseRealTime();
    RegisterBenchmark("floor", [bare = BareCalls(foreign)](benchmark::State& state) mutable {
        Repeat(state, [&] { return bare.Exchange(); });
    })->UseRealTime();
    RegisterBenchmark("hidapi", [](benchmark::State& state) {
        Repeat(state, HidapiExchange);
    })->UseRealTime();
}

}  // namespace
}  // namespace vento

int main(int argc, char** argv) {
    const std::size_t foreign = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 0;
    std::vector<std::unique_ptr<vento::device::UhidDevice>> devices;
    vento::PlugForeign(devices, foreign);
    if (::fork() == 0) vento::AnswerForEver();
    if (!vento::AwaitTransmitter()) {
        std::cerr << "no transmitter came\n";
        return EXIT_FAILURE;
    }
    vento::Register(foreign);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
