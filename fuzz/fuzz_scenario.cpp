#include "fuzzing.h"

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
        host.Search([&](std::string_view path) {
            const auto answer = host.Open(path, [](platform::HidIdentity) { return true; });
            if (answer.outcome != platform::OpenOutcome::opened) return true;
            platform::Report report{};
            for (std::size_t length = static_cast<unsigned char>(bytes.front()); !bytes.empty();) {
                const std::size_t count =
                    bytes.copy(reinterpret_cast<char*>(&report[1]), platform::kReportPayload);
                bytes.remove_prefix(count);
                host.Write(answer.handle, report);
                if (length <= count) break;
                length -= count;
            }
            for (int reads = 0; host.Read(answer.handle, report).whole && reads < 100; ++reads) {
            }
            host.Close(answer.handle);
            return false;
        });
        if (!bytes.empty()) bytes.remove_prefix(1);
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
