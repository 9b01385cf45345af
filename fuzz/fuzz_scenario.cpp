#include "fuzzing.h"
#include "usb/report_exchange.h"

namespace vento::fuzzing {
namespace {

/// The bytes up to the next NUL, which are taken off.
std::string Take(std::string_view& bytes) {
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    std::string text(bytes.substr(0, end));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
    return text;
}

/// Sends the bytes as reports, and reads whatever comes.
void Exchange(simulator::SimulatedHidHost& host, std::string_view bytes) {
    while (!bytes.empty()) {
        Link link(host, [](platform::HidIdentity) { return true; });
        HidDevice device;
        if (!OpenTransmitter(link, device).found) {
            bytes.remove_prefix(1);
            continue;
        }
        const std::size_t length = std::max<std::size_t>(static_cast<unsigned char>(bytes.front()), 1);
        const std::size_t payloads = (length - 1) / platform::kReportPayload + 1;
        const std::string_view frame = bytes.substr(0, payloads * platform::kReportPayload);
        (void)WriteReports(device, {reinterpret_cast<const std::uint8_t*>(frame.data()), frame.size()});
        bytes.remove_prefix(frame.size());
        platform::Report report{};
        for (int reads = 0; device.Read(report) && reads < 100; ++reads) {
        }
    }
}

void Try(std::string_view bytes) {
    simulator::Scenario scenario = simulator::ParseScenario(Take(bytes), Folder() / "");
    const std::string image = Take(bytes);
    scenario.image = Folder() / "image";  // whatever file the text has named
    std::filesystem::remove(scenario.image);
    if (!image.empty()) (void)Folder().Write("image", image);

    test::FakeClock clock;
    simulator::SimulatedHidHost host(scenario, clock);
    if (host.TheRemote() == nullptr) return;
    Exchange(host, bytes);
    const auto contents = host.TheRemote()->Contents();
    host.SaveImage();
    const simulator::SimulatedHidHost again(scenario, clock);
    Require(again.TheRemote()->Contents() == contents, "an image holds what the remote did");
}

}  // namespace
}  // namespace vento::fuzzing

/// Any bytes as a scenario, an image and reports for the transmitter, with a NUL between.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        vento::fuzzing::Try({reinterpret_cast<const char*>(data), size});
    } catch (const vento::storage::ContentError& error) {
        vento::fuzzing::RequireReadable(error.Reason());
    }
    return 0;
}
