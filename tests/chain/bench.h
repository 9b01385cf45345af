#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "panel/form_web.h"
#include "simulator/simulated_hid_host.h"
#include "support/fakes.h"

namespace vento::test {

namespace fault = simulator::fault;
using simulator::Fault;
using simulator::FaultKind;
using simulator::Scenario;
using simulator::WordRuns;

/// The frame of one send byte that asks for so many bytes of reply.
inline Bytes CommandFrame(std::uint8_t command, std::uint8_t replyCount) {
    return {7, 85, 1, 0, 1, command, replyCount};
}

/// A HID host that lets another do the work and keeps the frames that were written, cut to their own lengths.
class RecordingHidHost : public platform::ForwardingHidHost {
  public:
    RecordingHidHost(platform::HidHost& host, const int& yields) : ForwardingHidHost(host), yields_(yields) {}

    std::vector<Bytes> frames;
    int cycles = 0;

    /// The frames but for the polls of the presence wait: a "*" for each yield since the frame before, the
    /// bytes, a "<" for each report that was read, and "|" between them.
    [[nodiscard]] std::string Conversation() const {
        std::string text;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            if (frames[i] == CommandFrame(165, 1)) continue;
            if (!text.empty()) text += "| ";
            text.append(static_cast<std::size_t>(courses_[i].yields - (i > 0 ? courses_[i - 1].yields : 0)),
                        '*');
            for (const std::uint8_t byte : frames[i])
                text += std::to_string(byte) + ' ';
            text.append(courses_[i].reads, '<');
        }
        return text;
    }

    void Search(const std::function<bool(std::string_view path)>& visit) override {
        ++cycles;
        ForwardingHidHost::Search(visit);
    }
    platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override {
        const auto answer = ForwardingHidHost::Open(path, wanted);
        opened_ = answer.outcome == platform::OpenOutcome::opened;
        return answer;
    }
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override {
        if (std::exchange(opened_, false)) {
            frames.emplace_back();
            courses_.push_back({yields_});
        }
        Bytes& frame = frames.back();
        frame.insert(frame.end(), report.begin() + 1, report.end());
        frame.resize(std::min<std::size_t>(frame.size(), std::max<std::uint8_t>(frame[0], 2)));
        return ForwardingHidHost::Write(device, report);
    }
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override {
        ++courses_.back().reads;
        return ForwardingHidHost::Read(device, report);
    }

  private:
    struct Course {
        int yields;  // before the frame
        std::size_t reads = 0;
    };
    const int& yields_;
    std::vector<Course> courses_;
    bool opened_ = false;
};

/// Comma-separated numbers, `count` of them, that go up from `first`.
inline std::string ListOf(std::size_t count, unsigned first) {
    std::string list = std::to_string(first);
    for (std::size_t i = 1; i < count; ++i)
        list += ',' + std::to_string((first + i) % 256);
    return list;
}

/// Words of the remote's memory, `count` of them, as such a list leaves them.
inline std::vector<simulator::Word> WordsOf(std::size_t count, unsigned first) {
    std::vector<simulator::Word> words(count);
    for (simulator::Word& word : words)
        word = {static_cast<std::uint8_t>(first++), 52};
    return words;
}

/// A line of a programme file.
inline std::string Line(unsigned column, const std::string& label, const std::string& list) {
    return std::to_string(column) + ";" + label + ";" + list + ";;\n";
}

/// Both lists of every column of this mask (1 TV, 2 DTT, 4 SAT), list B beginning 100 above list A.
inline std::string Programme(unsigned columns, std::size_t length) {
    std::string text;
    for (unsigned c = 0; c < 3; ++c) {
        for (const unsigned first : {10 * c + 1, 10 * c + 101}) {
            if ((columns >> c & 1U) != 0) text += Line(c + 1, "L", ListOf(length, first));
        }
    }
    return text;
}

inline Scenario With(std::vector<Fault> faults, std::vector<std::uint16_t> sections = {256, 4352, 8448},
                     std::uint8_t version = 196) {
    Scenario scenario;
    scenario.faults = std::move(faults);
    scenario.remote->sections = std::move(sections);
    scenario.remote->version = version;
    return scenario;
}

/// The form on a simulated machine.
struct Workbench {
    FakeClock clock;
    FakeDesktop desktop;
    FakeFiles files;
    simulator::SimulatedHidHost simulated;
    RecordingHidHost host{simulated, desktop.yields};
    FormWeb form{{host, desktop, files, clock, platform::HidBackEnd::simulation}};

    explicit Workbench(const Scenario& scenario = {}, const std::string& programme = "")
        : simulated(scenario, clock) {
        files.contents["p.qlb"] = programme;
        form.Form_Load(programme.empty() ? "" : "p.qlb");
    }

    [[nodiscard]] int Code() const {
        return form.LatestOutcome() ? static_cast<int>(form.LatestOutcome()->code) : -1;
    }
    [[nodiscard]] WordRuns Memory() const { return simulated.TheRemote()->Contents().memory; }
};

}  // namespace vento::test
