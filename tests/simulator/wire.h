#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "protocol/frame.h"
#include "protocol/transmitter_kinds.h"
#include "simulator/simulated_hid_host.h"
#include "support/fakes.h"
#include "usb/report_exchange.h"

/// A simulated machine, and what the simulator's tests write on the wire.
namespace vento::simulator {

using test::Bytes;

/// A payload that begins with `bytes` and goes on with zeros.
inline Bytes Padded(Bytes bytes) {
    bytes.resize(platform::kReportPayload);
    return bytes;
}

/// A frame for the remote that sends the bytes, and how many are to come back behind the status.
inline Bytes RemoteFrame(const Bytes& sendBytes, int replyCount, int factor = 1) {
    const auto built = BuildRemoteFrame(static_cast<std::uint16_t>(factor), sendBytes,
                                        static_cast<std::uint8_t>(replyCount));
    return {built.Bytes().begin(), built.Bytes().end()};
}

/// A simulated machine, used by the report.
class Wire {
  public:
    explicit Wire(std::string_view scenario = "{}", const std::filesystem::path& folder = {})
        : host(ParseScenario(scenario, folder), clock) {}

    bool Open() {
        device.Close();
        return OpenTransmitter(link, device).found;
    }

    bool Write(const Bytes& frame) { return WriteReports(device, frame); }

    /// The payload of the next input report; nothing if there is none.
    std::optional<Bytes> Read() {
        platform::Report report{};
        if (!device.Read(report)) return std::nullopt;
        return Bytes(report.begin() + 1, report.end());
    }

    std::optional<Bytes> Exchange(const Bytes& frame) { return Write(frame) ? Read() : std::nullopt; }

    /// Checks a conversation, which is steps with ";" between them, each in a cycle of its own: the bytes to
    /// be sent, "x" and the LinkFactor (else 1), "/" and the count of reply bytes (else as many as come
    /// back), and, if a report is to come, "=" and its bytes from the status on, those behind being zeros. As
    /// in "1 0 8 /8 = 0 193".
    void Play(const std::string& script) {
        std::istringstream steps(script);
        for (std::string step; std::getline(steps, step, ';');) {
            Bytes sendBytes;
            std::optional<Bytes> reply;
            std::optional<int> factor;
            std::optional<int> replyCount;
            std::istringstream words(step);
            for (std::string word; words >> word;) {
                if (word == "=") {
                    reply.emplace();
                } else if (word[0] == 'x' || word[0] == '/') {
                    (word[0] == 'x' ? factor : replyCount) = std::stoi(word.substr(1));
                } else {
                    (reply ? *reply : sendBytes).push_back(static_cast<std::uint8_t>(std::stoi(word)));
                }
            }
            if (!replyCount) replyCount = reply ? static_cast<int>(reply->size()) - 1 : 0;
            if (reply) reply = Padded(*reply);
            const Bytes frame = RemoteFrame(sendBytes, *replyCount, factor.value_or(1));
            EXPECT_EQ(Open() ? Exchange(frame) : std::nullopt, reply) << "at " << step;
            device.Close();
        }
    }

    test::FakeClock clock;
    SimulatedHidHost host;
    Link link{host, IsTransmitter};
    HidDevice device;
};

}  // namespace vento::simulator
