#include "device/usb_gadget.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace vento::device {
namespace {

namespace fs = std::filesystem;

constexpr const char* kGadgets = "/sys/kernel/config/usb_gadget";
constexpr const char* kControllers = "/sys/class/udc";
constexpr std::string_view kPrefix = "vento-";  // a gadget is called vento-PROCESS-NUMBER
constexpr std::string_view kConfiguration = "configs/c.1";

/// HID 1.11, appendix B.1, without the lights, which nobody here would look at.
constexpr auto kKeyboardDescriptor = std::to_array<std::uint8_t>({
    0x05, 0x01, 0x09, 0x06, 0xA1, 0x01,                          // generic desktop, keyboard, application
    0x05, 0x07, 0x19, 0xE0, 0x29, 0xE7, 0x15, 0x00, 0x25, 0x01,  // the modifier keys, a bit each
    0x75, 0x01, 0x95, 0x08, 0x81, 0x02,                          //
    0x95, 0x01, 0x75, 0x08, 0x81, 0x01,                          // a byte that is reserved
    0x95, 0x06, 0x75, 0x08, 0x15, 0x00, 0x25, 0x65, 0x05, 0x07,  // six keys
    0x19, 0x00, 0x29, 0x65, 0x81, 0x00, 0xC0,
});

/// One HID function of the gadget.
struct Function {
    std::string_view name;
    std::span<const std::uint8_t> reportDescriptor;
    std::size_t reportLength;
    bool isBootKeyboard;
};

[[noreturn]] void Fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void Write(const std::string& file, std::string_view content) {
    const platform::FileDescriptor attribute(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
    if (!attribute.IsOpen() || ::write(attribute.Number(), content.data(), content.size()) < 0) Fail(file);
}

void MakeFolder(const std::string& folder) {
    if (::mkdir(folder.c_str(), 0755) != 0) Fail(folder);
}

std::string Line(const fs::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

std::string Hexadecimal(unsigned number) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "0x%04x", number);
    return text.data();
}

std::string NewFolder() {
    static unsigned last = 0;
    return std::string(kGadgets) + "/" + std::string(kPrefix) + std::to_string(::getpid()) + "-" +
           std::to_string(++last);
}

void RemoveAllIn(const fs::path& folder, bool links) {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        if (links ? entry.is_symlink(ignored) : entry.is_directory(ignored)) {
            fs::remove(entry.path(), ignored);  // rmdir; what belongs to a folder of configfs goes with it
        }
    }
}

/// Unplugs a gadget, and takes it apart in the only order that the kernel allows.
void Remove(const fs::path& gadget) {
    std::error_code ignored;
    {
        const platform::FileDescriptor bound(::open((gadget / "UDC").c_str(), O_WRONLY | O_CLOEXEC));
        if (bound.IsOpen() && ::write(bound.Number(), "\n", 1) < 0) return;
    }
    const fs::path configuration = gadget / kConfiguration;
    RemoveAllIn(configuration, true);
    RemoveAllIn(configuration / "strings", false);
    for (const char* folder : {"configs", "functions", "strings"})
        RemoveAllIn(gadget / folder, false);
    fs::remove(gadget, ignored);
}

/// Gadgets of a simulator that was killed keep their controller until somebody takes them away.
void RemoveLeftOver() {
    std::error_code error;
    std::vector<fs::path> leftOver;
    for (const fs::directory_entry& entry : fs::directory_iterator(kGadgets, error)) {
        const std::string name = entry.path().filename();
        if (!name.starts_with(kPrefix)) continue;
        const std::string process = name.substr(kPrefix.size(), name.rfind('-') - kPrefix.size());
        if (!process.empty() && !fs::exists("/proc/" + process, error)) leftOver.push_back(entry.path());
    }
    std::ranges::for_each(leftOver, Remove);
}

void CheckKernel() {
    if (::access(kGadgets, F_OK) != 0) {
        throw GadgetError(
            "The kernel's USB gadgets are not there. Load them with 'sudo modprobe -a libcomposite "
            "usb_f_hid', and if /sys/kernel/config is empty mount it with 'sudo mount -t configfs none "
            "/sys/kernel/config'.");
    }
}

std::vector<std::string> Controllers() {
    std::error_code error;
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(kControllers, error))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

std::string StateOf(const std::string& controller) {
    return fs::path(kControllers) / controller / "state";
}

/// The state, open and read, so that poll(2) tells from now on that it has changed.
platform::FileDescriptor WatchState(const std::string& controller) {
    platform::FileDescriptor state(::open(StateOf(controller).c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 32> text{};
    if (!state.IsOpen() || ::read(state.Number(), text.data(), text.size()) < 0) Fail(StateOf(controller));
    return state;
}

bool IsFree(const std::string& controller) {
    return Line(fs::path(kControllers) / controller / "function").empty();
}

void AddFunction(const std::string& gadget, const Function& function) {
    const std::string folder = gadget + "/functions/" + std::string(function.name);
    MakeFolder(folder);
    Write(folder + "/subclass", function.isBootKeyboard ? "1" : "0");
    Write(folder + "/protocol", function.isBootKeyboard ? "1" : "0");
    Write(folder + "/report_length", std::to_string(function.reportLength));
    Write(folder + "/report_desc", {reinterpret_cast<const char*>(function.reportDescriptor.data()),
                                    function.reportDescriptor.size()});
    const std::string link = gadget + "/" + std::string(kConfiguration) + "/" + std::string(function.name);
    if (::symlink(folder.c_str(), link.c_str()) != 0) Fail(link);
}

/// The node through which the function's reports go.
platform::FileDescriptor OpenNode(const std::string& function) {
    const std::string number = Line(function + "/dev");  // MAJOR:MINOR
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator("/dev", error)) {
        if (!entry.path().filename().string().starts_with("hidg")) continue;
        struct stat status {};
        if (::stat(entry.path().c_str(), &status) != 0) continue;
        if (std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev)) != number)
            continue;
        platform::FileDescriptor node(::open(entry.path().c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
        if (!node.IsOpen()) Fail(entry.path());
        return node;
    }
    throw std::system_error(ENODEV, std::generic_category(), "/dev has no node for the gadget");
}

}  // namespace

std::vector<std::string> FreeControllers(const std::vector<std::string>& wanted, std::size_t count) {
    CheckKernel();
    RemoveLeftOver();
    const std::vector<std::string> all = Controllers();
    std::vector<std::string> free;
    std::ranges::copy_if(wanted.empty() ? all : wanted, std::back_inserter(free), [&](const auto& each) {
        return std::ranges::find(all, each) != all.end() && IsFree(each);
    });
    if (free.size() < wanted.size() || free.size() < count) {
        std::string there;
        for (const std::string& each : all)
            there += (there.empty() ? "" : ", ") + each + (IsFree(each) ? "" : " (in use)");
        throw GadgetError("The scenario takes " + std::to_string(std::max(count, wanted.size())) +
                          " free USB device controller(s). This machine has " +
                          (there.empty() ? "none" : there) +
                          ". 'sudo modprobe dummy_hcd num=4' makes four that are plugged into this machine "
                          "itself.");
    }
    return free;
}

UsbGadget::UsbGadget(const Setup& setup) : controller_(setup.controller), folder_(NewFolder()) {
    CheckKernel();
    try {
        Build(setup);
    } catch (...) {
        Remove(folder_);
        throw;
    }
}

void UsbGadget::Build(const Setup& setup) {
    MakeFolder(folder_);
    Write(folder_ + "/idVendor", Hexadecimal(setup.identity.vendorId));
    Write(folder_ + "/idProduct", Hexadecimal(setup.identity.productId));
    Write(folder_ + "/bcdUSB", "0x0200");
    constexpr std::string_view kEnglish = "strings/0x409";
    const std::string strings = folder_ + "/" + std::string(kEnglish);
    MakeFolder(strings);
    Write(strings + "/manufacturer", "VENTO");
    Write(strings + "/product", "VENTO virtual transmitter");
    Write(strings + "/serialnumber", "1");
    const std::string configuration = folder_ + "/" + std::string(kConfiguration);
    MakeFolder(configuration);
    Write(configuration + "/MaxPower", "100");

    // The order of the functions is that of the interfaces.
    if (setup.keyboardFirst) AddFunction(folder_, {"hid.keyboard", kKeyboardDescriptor, 8, true});
    constexpr std::string_view kTransmitter = "hid.transmitter";
    AddFunction(folder_, {kTransmitter, kReportDescriptor, platform::kReportPayload, false});
    state_ = WatchState(controller_);
    Write(folder_ + "/UDC", controller_);
    reports_ = OpenNode(folder_ + "/functions/" + std::string(kTransmitter));
}

UsbGadget::~UsbGadget() {
    reports_ = {};
    Remove(folder_);
}

std::optional<std::string> UsbGadget::Place() const {
    // Until the host resets its port a controller goes on naming the state that the gadget before was in.
    pollfd state{.fd = state_.Number(), .events = POLLPRI, .revents = 0};
    if (::poll(&state, 1, 0) < 1 || Line(StateOf(controller_)) != "configured") return std::nullopt;
    return controller_;
}

std::optional<DeviceEvent> UsbGadget::NextEvent() {
    // USB carries no report id where a device has none; a program that writes puts a 0 there.
    std::array<std::uint8_t, platform::kReportPayload> payload{};
    const ssize_t count = ::read(reports_.Number(), payload.data(), payload.size());
    if (count <= 0) return std::nullopt;
    DeviceEvent event{.kind = DeviceEvent::Kind::output, .report = {0}};
    event.report.insert(event.report.end(), payload.begin(), payload.begin() + count);
    return event;
}

bool UsbGadget::Send(std::span<const std::uint8_t> payload) {
    return ::write(reports_.Number(), payload.data(), payload.size()) >= 0 || errno != EAGAIN;
}

}  // namespace vento::device
