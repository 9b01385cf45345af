#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/simulated_hid_host.h"

/// A simulated machine, and what the simulator's tests write on the wire.
namespace vento::simulator {

using Bytes = std::vector<std::uint8_t>;

/// A clock that nobody waits for.
class StillClock final : public platform::Clock {
  public:
    [[nodiscard]] Duration Now() override { return now; }
    void Sleep(Duration duration) override { now += duration; }

    Duration now{};
};

/// A payload that begins with `bytes` and goes on with zeros.
inline Bytes Padded(Bytes bytes) {
    bytes.resize(platform::kReportPayload);
    return bytes;
}

/// One frame for the remote and what comes back, as text: the send bytes, "x" and the LinkFactor (else 1),
/// "/" and the count of reply bytes (else as many as come back), and, if a report is to come, "=" and its
/// bytes from the status on, those behind being zeros. As in "1 0 8 /8 = 0 193".
struct Step {
    explicit Step(const std::string& text) {
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            const auto number = [&](std::size_t from) { return std::stoi(word.substr(from)); };
            if (word == "=") {
                reply.emplace();
            } else if (word[0] == 'x') {
                factor = static_cast<std::size_t>(number(1));
            } else if (word[0] == '/') {
                replyCount = number(1);
            } else {
                (reply ? *reply : sendBytes).push_back(static_cast<std::uint8_t>(number(0)));
            }
        }
        if (!replyCount) replyCount = reply ? static_cast<int>(reply->size()) - 1 : 0;
        if (reply) reply = Padded(*reply);
    }

    [[nodiscard]] Bytes Frame() const {
        Bytes frame;
        const std::size_t n = sendBytes.size();
        for (const std::size_t each : {n + 6, std::size_t{'U'}, factor % 256, factor / 256, n}) {
            frame.push_back(static_cast<std::uint8_t>(each));
        }
        frame.insert(frame.end(), sendBytes.begin(), sendBytes.end());
        frame.push_back(static_cast<std::uint8_t>(*replyCount));
        return frame;
    }

    Bytes sendBytes;
    std::size_t factor = 1;
    std::optional<int> replyCount;
    std::optional<Bytes> reply;
};

/// A simulated machine, used by the report.
class Wire {
  public:
    explicit Wire(std::string_view scenario = "{}", const std::filesystem::path& folder = {})
        : host(ParseScenario(scenario, folder), clock) {}

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

    bool Write(std::span<const std::uint8_t> bytes) {
        for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), platform::kReportPayload))) {
            platform::Report report{};
            std::ranges::copy(bytes.first(std::min(bytes.size(), platform::kReportPayload)),
                              report.begin() + 1);
            if (!host.WriteReport(device, report)) return false;
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
        if (Write(frame)) reply = Read();
        host.Close(device);
        return reply;
    }

    /// Checks a conversation, which is steps with ";" between them, each in a cycle of its own.
    void Play(const std::string& script) {
        std::istringstream steps(script);
        for (std::string text; std::getline(steps, text, ';');) {
            const Step step(text);
            EXPECT_EQ(Exchange(step.Frame()), step.reply) << "at " << text;
        }
    }

    StillClock clock;
    SimulatedHidHost host;
    platform::HidHandle device = -1;
};

}  // namespace vento::simulator
