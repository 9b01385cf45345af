#pragma once

#include <memory>
#include <string>
#include <vector>

#include "panel/form_web.h"
#include "simulator/simulated_hid_host.h"
#include "support/fakes.h"

namespace vento::test {

/// A HID host that lets another do the work and keeps the frames that were written, cut to their own lengths.
class RecordingHidHost : public platform::HidHost {
  public:
    explicit RecordingHidHost(platform::HidHost& host) : host_(host) {}

    std::vector<Bytes> frames;
    int cycles = 0;
    int openHandles = 0;

    /// The frames but for the polls of the presence wait.
    [[nodiscard]] std::vector<Bytes> Conversation() const {
        std::vector<Bytes> conversation;
        for (const Bytes& frame : frames) {
            if (frame.size() != 7 || frame[5] != 165) conversation.push_back(frame);
        }
        return conversation;
    }

    void BeginSearch() override {
        ++cycles;
        host_.BeginSearch();
    }
    bool NextInterface() override { return host_.NextInterface(); }
    std::string InterfaceName() const override { return host_.InterfaceName(); }
    platform::OpenAnswer OpenInterface(bool (*wanted)(platform::HidIdentity)) override {
        auto answer = host_.OpenInterface(wanted);
        if (answer.outcome == platform::OpenOutcome::opened) ++openHandles;
        awaited_ = 0;
        return answer;
    }
    void EndSearch() override { host_.EndSearch(); }
    bool WriteReport(platform::HidHandle device, const platform::Report& report) override {
        if (awaited_ == 0) {
            frames.emplace_back();
            awaited_ = report[2] == 'Q' ? 2 : report[1];
        }
        const std::size_t count = std::min<std::size_t>(awaited_, platform::kReportPayload);
        frames.back().insert(frames.back().end(), report.begin() + 1,
                             report.begin() + 1 + static_cast<std::ptrdiff_t>(count));
        awaited_ -= count;
        return host_.WriteReport(device, report);
    }
    bool ReadReport(platform::HidHandle device, platform::Report& report) override {
        return host_.ReadReport(device, report);
    }
    void Cancel(platform::HidHandle device) override { host_.Cancel(device); }
    void Close(platform::HidHandle device) override {
        --openHandles;
        host_.Close(device);
    }
    std::string Advice(platform::OpenOutcome outcome, platform::Tongue tongue) const override {
        return host_.Advice(outcome, tongue);
    }

  private:
    platform::HidHost& host_;
    std::size_t awaited_ = 0;
};

/// Comma-separated numbers, `count` of them, that go up from `first`.
inline std::string ListOf(std::size_t count, unsigned first) {
    std::string list;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) list += ',';
        list += std::to_string((first + i) % 256);
    }
    return list;
}

/// A line of a programme file.
inline std::string Line(int column, const std::string& label, const std::string& list) {
    return std::to_string(column) + ";" + label + ";" + list + ";;\n";
}

/// The form on a simulated machine.
struct Workbench {
    FakeClock clock;
    FakeDesktop desktop;
    FakeFiles files;
    simulator::SimulatedHidHost simulated;
    RecordingHidHost host{simulated};
    FormWeb form{{host, desktop, files, clock}};

    explicit Workbench(const simulator::Scenario& scenario = {}, const std::string& programme = "")
        : simulated(scenario, clock) {
        files.contents["p.qlb"] = programme;
        form.Form_Load(programme.empty() ? "" : "p.qlb");
    }

    [[nodiscard]] int Code() const {
        return form.LatestOutcome() ? static_cast<int>(form.LatestOutcome()->code) : -1;
    }
    /// The first bytes of a run of words in the remote's memory.
    [[nodiscard]] Bytes Stored(std::uint16_t offset, std::size_t count) const {
        Bytes bytes(count, 255);
        for (const auto& [start, words] : simulated.TheRemote()->Contents().memory) {
            for (std::size_t i = 0; i < words.size(); ++i) {
                const std::size_t at = start + i;
                if (at >= offset && at < offset + count) bytes[at - offset] = words[i].first;
            }
        }
        return bytes;
    }
};

}  // namespace vento::test
