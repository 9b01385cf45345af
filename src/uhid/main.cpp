#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <system_error>

#include "platform/files.h"
#include "platform/linux/clock.h"
#include "platform/linux/file_descriptor.h"
#include "simulator/image.h"
#include "simulator/scenario.h"
#include "simulator/scenario_error.h"
#include "uhid/scenario_server.h"

/// vento-simulator: a transmitter, with a remote in front of it, that the kernel takes for a real one.
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

/// Says what is missing for the kernel to take the devices.
int ComplainOfKernel(const std::system_error& error) {
    switch (error.code().value()) {
        case EACCES:
        case EPERM:
            return Complain("Only root may open /dev/uhid. Start with 'sudo vento-simulator'.", kForbidden);
        case ENOENT:
        case ENXIO:
            return Complain("There is no /dev/uhid. Load the kernel's module with 'sudo modprobe uhid'.",
                            kUnavailable);
        default:
            return Complain(error.what(), kUnavailable);
    }
}

/// Readable when the program is asked to end; from now on such a request no longer ends it by itself.
vento::platform::FileDescriptor RequestsToStop() {
    sigset_t requests{};
    sigemptyset(&requests);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&requests, signal);
    std::signal(SIGPIPE, SIG_IGN);  // what the simulator says need not be listened to
    ::sigprocmask(SIG_BLOCK, &requests, nullptr);
    return vento::platform::FileDescriptor(::signalfd(-1, &requests, SFD_CLOEXEC));
}

int Simulate(const std::string& scenarioFile) {
    using vento::simulator::Scenario;
    try {
        const auto stop = RequestsToStop();
        const Scenario scenario =
            scenarioFile.empty() ? Scenario{} : vento::simulator::LoadScenario(scenarioFile);
        vento::platform::LinuxClock clock;
        vento::uhid::ScenarioServer server(scenario, clock, std::cout);
        server.PlugIn();
        std::cout << "ready\n" << std::flush;
        server.Run(stop.Number());
        server.SaveImage();
        return EXIT_SUCCESS;
    } catch (const vento::simulator::ScenarioError& error) {
        return Complain(error.what(), kUnusableScenario);
    } catch (const vento::platform::FileError& error) {
        return Complain(scenarioFile + ": " + error.what(), kNoInput);
    } catch (const vento::simulator::ImageError& error) {
        return Complain(error.what(), kCannotWrite);
    } catch (const std::system_error& error) {
        return ComplainOfKernel(error);
    }
}

int Run(int argc, char** argv) {
    CLI::App app(
        "Puts a transmitter, with a remote in front of it, into the kernel as a HID device, and serves it "
        "until\n"
        "it is interrupted. VENTO then sees it like any other transmitter. Needs root and the kernel's "
        "uhid.");
    std::string scenario;
    app.add_option("SCENARIO", scenario,
                   "what to simulate (JSON); without it a plain transmitter and remote");
    app.set_version_flag("--version", "vento-simulator " VENTO_VERSION);
    app.footer(
        "Exit status: 0 ended when asked to, 64 wrong usage, 65 unusable scenario, 66 scenario that cannot\n"
        "be read, 69 no /dev/uhid, 70 anything unforeseen, 73 image that cannot be written, 77 no\n"
        "permission.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& outcome) {
        return app.exit(outcome) == 0 ? EXIT_SUCCESS : kUsage;
    }
    return Simulate(scenario);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::fputs(error.what(), stderr);
        return kUnforeseen;
    }
}
