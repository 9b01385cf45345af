// What one exchange with a HID device of the kernel takes: over one descriptor that stays open, through
// VENTO's own back end with all that a cycle has, through the bare system calls of such a cycle, and through
// hidapi. Needs root, and /dev/uhid or a free USB device controller.
//
//   hid_exchange_bench uhid|usb FOREIGN [option of Google Benchmark...]
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
#include "device/usb_gadget.h"
#include "platform/linux/hidraw_host.h"
#include "platform/posix/file_descriptor.h"
#include "usb/report_exchange.h"

namespace vento {
namespace {

using device::DeviceEvent;
using device::KernelDevice;
using device::UhidDevice;
using platform::FileDescriptor;

constexpr platform::HidIdentity kTransmitter{1240, 1};
constexpr platform::HidIdentity kForeign{0x046D, 0xC31C};
constexpr std::array<std::uint8_t, 7> kFrame = {7, 'U', 1, 0, 1, 165, 1};

bool IsOurs(platform::HidIdentity identity) {
    return identity == kTransmitter;
}

std::unique_ptr<KernelDevice> PlugTransmitter(bool onUsb) {
    if (!onUsb) return std::make_unique<UhidDevice>(kTransmitter);
    return std::make_unique<device::UsbGadget>(device::UsbGadget::Setup{
        .identity = kTransmitter, .controller = device::FreeControllers({}, 1).front()});
}

void Await(int descriptor, short events) {
    pollfd waiting{.fd = descriptor, .events = events, .revents = 0};
    ::poll(&waiting, 1, -1);
}

// A process of its own, as the device is outside of this one: sends a report for each that it gets.
void AnswerForEver(bool onUsb) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::unique_ptr<KernelDevice> device = PlugTransmitter(onUsb);
    constexpr std::array<std::uint8_t, platform::kReportPayload> answer = {0, 165};
    for (;;) {
        Await(device->Descriptor(), POLLIN);
        while (const auto event = device->NextEvent()) {
            while (event->kind == DeviceEvent::Kind::output && !device->Send(answer))
                Await(device->Descriptor(), POLLOUT);
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

// A host that keeps nothing between two exchanges.
class WithoutHold final : public platform::ForwardingHidHost {
  public:
    using ForwardingHidHost::ForwardingHidHost;
    [[nodiscard]] std::shared_ptr<platform::Conversation> Converse() override { return nullptr; }
};

void OwnBackEnd(benchmark::State& state, bool holds) {
    platform::HidrawHost hidraw;
    WithoutHold withoutHold(hidraw);
    Link link(holds ? static_cast<platform::HidHost&>(hidraw) : withoutHold, IsOurs);
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

    [[nodiscard]] FileDescriptor Open() const {
        return FileDescriptor(::open(node_.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
    }

    // Search, open, one report each way, close.
    [[nodiscard]] bool Cycle() {
        const FileDescriptor folder(::open("/sys/class/hidraw", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        while (::getdents64(folder.Number(), buffer_.data(), buffer_.size()) > 0) {
        }
        for (const std::string& link : links_) {
            if (::readlink(link.c_str(), buffer_.data(), buffer_.size()) <= 0) return false;
        }
        const FileDescriptor node = Open();
        hidraw_devinfo info{};
        ::ioctl(node.Number(), HIDIOCGRAWINFO, &info);
        return Exchange(node);
    }

    // One report each way.
    [[nodiscard]] bool Exchange(const FileDescriptor& node) {
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
    RegisterBenchmark("own", [](benchmark::State& state) { OwnBackEnd(state, true); })->UseRealTime();
    RegisterBenchmark("unheld", [](benchmark::State& state) { OwnBackEnd(state, false); })->UseRealTime();
    RegisterBenchmark("floor", [bare = BareCalls(foreign)](benchmark::State& state) mutable {
        const FileDescriptor node = bare.Open();
        Repeat(state, [&] { return bare.Exchange(node); });
    })->UseRealTime();
    RegisterBenchmark("calls", [bare = BareCalls(foreign)](benchmark::State& state) mutable {
        const FileDescriptor held = bare.Open();
        Repeat(state, [&] { return bare.Cycle(); });
    })->UseRealTime();
    RegisterBenchmark("hidapi", [](benchmark::State& state) {
        Repeat(state, HidapiExchange);
    })->UseRealTime();
}

// A gadget of an earlier run that was killed goes first, so that the nodes are numbered as they are plugged
// in.
void RemoveLeftOver() {
    using std::chrono_literals::operator""ms;
    static_cast<void>(device::FreeControllers({}, 1));
    while (::access("/dev/hidraw0", F_OK) == 0)
        std::this_thread::sleep_for(5ms);
}

}  // namespace
}  // namespace vento

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "hid_exchange_bench uhid|usb FOREIGN [option...]\n";
        return EXIT_FAILURE;
    }
    const bool onUsb = std::string_view(argv[1]) == "usb";
    const std::size_t foreign = std::strtoul(argv[2], nullptr, 10);
    if (onUsb) vento::RemoveLeftOver();
    std::vector<std::unique_ptr<vento::device::UhidDevice>> devices;
    vento::PlugForeign(devices, foreign);
    if (::fork() == 0) vento::AnswerForEver(onUsb);
    if (!vento::AwaitTransmitter()) {
        std::cerr << "no transmitter came\n";
        return EXIT_FAILURE;
    }
    vento::Register(foreign);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
