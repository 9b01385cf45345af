#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "device/scenario_server.h"
#include "device/uhid_device.h"
#include "device/usb_gadget.h"
#include "platform/files.h"
#include "platform/native.h"
#include "platform/posix/file_descriptor.h"
#include "simulator/image.h"
#include "simulator/scenario.h"
#include "storage/json.h"

/// vento-simulator: a transmitter, with a remote in front of it, that the kernel takes for a real one.
namespace vento {
namespace {

enum ExitStatus : int {
    kUsage = 64,
    kUnusableScenario = 65,
    kNoInput = 66,
    kUnavailable = 69,
    kUnforeseen = 70,
    kCannotWrite = 73,
    kForbidden = 77,
};

int Complain(const std::string& complaint, ExitStatus status) {
    std::cerr << "vento-simulator: " << complaint << '\n';
    return status;
}

struct Request {
    std::string scenario;  ///< path; empty for the plain simulation
    bool gadget = false;
    std::vector<std::string> controllers;  ///< of the gadgets; empty for any
    bool keyboard = false;
};

/// Says what is missing for the kernel to take the devices.
int ComplainOfKernel(const std::system_error& error, bool gadget) {
    switch (error.code().value()) {
        case EACCES:
        case EPERM:
            return Complain("Only root may make devices. Start with 'sudo vento-simulator'.", kForbidden);
        case ENOENT:
        case ENXIO:
            if (gadget) break;
            return Complain("There is no /dev/uhid. Load the kernel's module with 'sudo modprobe uhid'.",
                            kUnavailable);
        default:
            break;
    }
    return Complain(error.what(), kUnavailable);
}

/// Readable when the program is asked to end; from now on such a request no longer ends it by itself.
platform::FileDescriptor RequestsToStop() {
    sigset_t requests{};
    sigemptyset(&requests);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&requests, signal);
    std::signal(SIGPIPE, SIG_IGN);  // what the simulator says need not be listened to
    ::sigprocmask(SIG_BLOCK, &requests, nullptr);
    return platform::FileDescriptor(::signalfd(-1, &requests, SFD_CLOEXEC));
}

/// Throws GadgetError.
device::Port PortFor(const Request& request, std::size_t interfaces) {
    using device::KernelDevice;
    using platform::HidIdentity;
    if (!request.gadget) {
        return {.plugIn = [](std::size_t, HidIdentity identity) -> std::unique_ptr<KernelDevice> {
            return std::make_unique<device::UhidDevice>(identity);
        }};
    }
    return {.plugIn = [controllers = device::FreeControllers(request.controllers, interfaces),
                       keyboard = request.keyboard](std::size_t index,
                                                    HidIdentity identity) -> std::unique_ptr<KernelDevice> {
                return std::make_unique<device::UsbGadget>(device::UsbGadget::Setup{
                    .identity = identity,
                    .controller = controllers[index],
                    .keyboardFirst = keyboard && simulator::LinkFactorOf(identity.vendorId)});
            },
            .hostMayBeAbsent = true};
}

int Simulate(const Request& request) {
    using simulator::Scenario;
    try {
        const auto stop = RequestsToStop();
        const Scenario scenario =
            request.scenario.empty() ? Scenario{} : simulator::LoadScenario(request.scenario);
        const auto clock = platform::MakeNativeClock();
        device::ScenarioServer server(scenario, PortFor(request, scenario.interfaces.size()), *clock,
                                      std::cout);
        server.PlugIn();
        std::cout << "ready\n" << std::flush;
        server.Run(stop.Number());
        server.SaveImage();
        return EXIT_SUCCESS;
    } catch (const storage::ContentError& error) {
        return Complain(request.scenario + ": " + error.what(), kUnusableScenario);
    } catch (const platform::FileError& error) {
        return Complain(request.scenario + ": " + error.what(), kNoInput);
    } catch (const simulator::ImageError& error) {
        return Complain(error.what(), kCannotWrite);
    } catch (const device::GadgetError& error) {
        return Complain(error.what(), kUnavailable);
    } catch (const std::system_error& error) {
        return ComplainOfKernel(error, request.gadget);
    }
}

int Run(int argc, char** argv) {
    CLI::App app(
        "Puts a transmitter, with a remote in front of it, into the kernel as a HID device, and serves it "
        "until\n"
        "it is interrupted. VENTO then sees it like any other transmitter. Needs root, and the kernel's uhid "
        "or,\n"
        "for a device on real USB, a USB device controller.");
    Request request;
    app.add_option("SCENARIO", request.scenario,
                   "what to simulate (JSON); without it a plain transmitter and remote");
    // A flag takes a value behind '=' only, so that the word behind it is still the scenario.
    std::string controllers;
    CLI::Option* const gadget =
        app.add_flag("--gadget{}", controllers,
                     "be a USB device, on this controller (several: A,B) or on any that is free");
    app.add_flag("--keyboard", request.keyboard,
                 "with --gadget: a composite device, whose first interface is a keyboard")
        ->needs(gadget);
    app.set_version_flag("--version", "vento-simulator " VENTO_VERSION);
    app.footer(
        "Exit status: 0 ended when asked to, 64 wrong usage, 65 unusable scenario, 66 scenario that cannot\n"
        "be read, 69 no /dev/uhid or no USB device controller, 70 anything unforeseen, 73 image that cannot\n"
        "be written, 77 no permission.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        // What CLI11 makes of a flag that may have a value, and what people know it as.
        std::string help = app.help();
        help.replace(help.find("--gadget{}    "), 14, "--gadget[=UDC]");
        std::cout << help;
        return EXIT_SUCCESS;
    } catch (const CLI::ParseError& outcome) {
        return app.exit(outcome) == 0 ? EXIT_SUCCESS : kUsage;
    }
    request.gadget = gadget->count() > 0;
    if (!controllers.empty()) request.controllers = CLI::detail::split(controllers, ',');
    return Simulate(request);
}

}  // namespace
}  // namespace vento

int main(int argc, char** argv) {
    try {
        return vento::Run(argc, argv);
    } catch (const std::exception& error) {
        std::fputs(error.what(), stderr);
        return vento::kUnforeseen;
    }
}
