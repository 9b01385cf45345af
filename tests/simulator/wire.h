#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "simulator/simulated_hid_host.h"

/// What the simulator's tests write on the wire, and a machine to write it to.
namespace vento::simulator {

using Bytes = std::vector<std::uint8_t>;

/// A clock that nobody waits for.
class StillClock final : public platform::Clock {
  public:
    [[nodiscard]] Duration Now() override { return now; }
    void Sleep(Duration duration) override { now += duration; }

    Duration now{};
};

inline Bytes RemoteFrame(const Bytes& sendBytes, std::uint8_t replyCount, std::uint16_t factor = 1) {
    const auto size = static_cast<std::uint8_t>(sendBytes.size());
    Bytes frame = {static_cast<std::uint8_t>(size + 6), 'U', static_cast<std::uint8_t>(factor & 255),
                   static_cast<std::uint8_t>(factor >> 8), size};
    frame.insert(frame.end(), sendBytes.begin(), sendBytes.end());
    frame.push_back(replyCount);
    return frame;
}

/// A payload that begins with `bytes` and goes on with zeros.
inline Bytes Padded(Bytes bytes) {
    bytes.resize(platform::kReportPayload);
    return bytes;
}

/// A simulated machine, used by the report.
class Wire {
  public:
    explicit Wire(const Scenario& scenario = {}) : host(scenario, clock) {}

    /// Searches, and opens the first transmitter that opens.
    bool Open() {
        host.BeginSearch();
        platform::OpenAnswer answer;
        const auto wanted = [](platform::HidIdentity each) {
            return LinkFactorOf(each.vendorId).has_value();
        };
        while (answer.outcome != platform::OpenOutcome::opened && host.NextInterface()) {
            answer = host.OpenInterface(wanted);
        }
        host.EndSearch();
        device = answer.handle;
        return answer.outcome == platform::OpenOutcome::opened;
    }

    bool Write(const Bytes& payload) {
        platform::Report report{};
        std::ranges::copy(payload, report.begin() + 1);
        return host.WriteReport(device, report);
    }

    bool WriteFrame(std::span<const std::uint8_t> frame) {
        while (!frame.empty()) {
            const auto part = frame.first(std::min(frame.size(), platform::kReportPayload));
            if (!Write({part.begin(), part.end()})) return false;
            frame = frame.subspan(part.size());
        }
        return true;
    }

    /// The payload of the next input report; nothing if there is none.
    std::optional<Bytes> Read() {
        platform::Report report{};
        if (!host.ReadReport(device, report)) return std::nullopt;
        return Bytes(report.begin() + 1, report.end());
    }

    /// A whole cycle.
    std::optional<Bytes> Exchange(const Bytes& frame) {
        if (!Open()) return std::nullopt;
        std::optional<Bytes> reply;
        if (WriteFrame(frame)) reply = Read();
        host.Close(device);
        return reply;
    }

    StillClock clock;
    SimulatedHidHost host;
    platform::HidHandle device = -1;
};

/// One frame of a conversation, and what comes back.
struct Step {
    Bytes sendBytes;
    std::uint8_t replyCount = 1;
    Bytes reply;  ///< from the status on, zeros behind; empty for no report
    std::uint16_t factor = 1;
};

inline void Play(Wire& wire, const std::vector<Step>& steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        std::optional<Bytes> expected;
        if (!step.reply.empty()) expected = Padded(step.reply);
        EXPECT_EQ(wire.Exchange(RemoteFrame(step.sendBytes, step.replyCount, step.factor)), expected)
            << "step " << i;
    }
}

}  // namespace vento::simulator
