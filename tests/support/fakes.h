#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/hid_host.h"

/// Machines of the tests: what the logic asks for is answered from plain members, and what it does is kept.
namespace vento::test {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

class FakeClock : public platform::Clock {
  public:
    Duration now{};

    Duration Now() override { return now; }
    void Sleep(Duration duration) override { now += duration; }
};

class FakeDesktop : public platform::Desktop {
  public:
    std::function<void(int)> onYield = [](int) {};  // gets the number of the yield, from 1
    int yields = 0;
    std::vector<std::string> messages;
    std::deque<std::optional<std::string>> choices;  // of the file dialog, in order
    std::string dialog;                              // title and filter of the latest
    std::optional<std::string> language = "ENG";
    std::string activeForm = "FormWeb";
    int ends = 0;

    void Yield() override { onYield(++yields); }
    void ShowMessage(std::string_view text, std::string_view) override { messages.emplace_back(text); }
    std::optional<std::string> ChooseFile(std::string_view title, std::string_view filter) override {
        dialog = std::string(title) + "|" + std::string(filter);
        auto choice = choices.front();
        choices.pop_front();
        return choice;
    }
    std::string ActiveFormName() const override { return activeForm; }
    platform::TwipSize ScreenSize() const override { return {28801, 16201}; }
    std::optional<std::string> LanguageAbbreviation() override { return language; }
    void EndProgram() override { ++ends; }
};

class FakeFiles : public platform::Files {
  public:
    std::map<std::string, std::string> contents;
    std::vector<std::string> deleted;
    std::string section;  // of the settings
    std::string sectionAsked;
    std::vector<std::size_t> sectionBuffers;  // sizes that were asked with

    std::string ReadAll(const std::string& path, std::size_t most) override {
        const auto found = contents.find(path);
        if (found == contents.end()) throw platform::FileError(std::errc::no_such_file_or_directory);
        if (found->second.size() > most) throw platform::FileTooLarge();
        return found->second;
    }
    void Delete(const std::string& path) override { deleted.push_back(path); }
    fs::path ProgramFolder() override { return "/opt/vento"; }
    std::size_t ReadSection(std::string_view name, std::span<char> buffer, const fs::path& file) override {
        sectionAsked = std::string(name) + "|" + file.generic_string();
        sectionBuffers.push_back(buffer.size());
        return section.copy(buffer.data(), buffer.size() - 2);
    }
};

/// HID interfaces whose transmitter answers by a function from frame to input payload. Keeps what crossed the
/// link.
class ScriptedHidHost : public platform::HidHost {
  public:
    struct Interface {
        platform::HidIdentity identity{1240, 63};
        platform::OpenOutcome outcome = platform::OpenOutcome::opened;
    };
    std::vector<Interface> interfaces = std::vector<Interface>(1);
    /// The input payloads for what was written since the open; none to let the read fail.
    std::function<std::deque<Bytes>(const Bytes& written)> answer;
    std::optional<std::size_t> failingWrite;  // in a cycle, from 0
    int cycles = 0;
    std::vector<platform::Report> reports;  // all that were written
    std::vector<Bytes> frames;              // payloads of each cycle that wrote, joined
    // Of the latest cycle: "o" for an open, "w" write, "r" read, "a" cancel, "c" close, "?" for a wrong
    // handle.
    std::string calls;

    void Search(const std::function<bool(std::string_view path)>& visit) override {
        ++cycles;
        calls.clear();
        for (std::size_t i = 0; i < interfaces.size(); ++i) {
            if (!visit(std::to_string(i))) return;
        }
    }
    platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override {
        const auto [identity, outcome] = interfaces.at(std::stoul(std::string(path)));
        if (!wanted(identity)) return {platform::OpenOutcome::foreign, identity};
        if (outcome != platform::OpenOutcome::opened) return {outcome, identity};
        calls += 'o';
        written_.clear();
        answers_.reset();
        return {outcome, identity, kHandle};
    }
    platform::ReportTransfer Write(platform::HidHandle device, const platform::Report& report) override {
        Note('w', device);
        if (failingWrite == written_.size() / platform::kReportPayload) return {};
        reports.push_back(report);
        if (written_.empty()) frames.emplace_back();
        written_.insert(written_.end(), report.begin() + 1, report.end());
        frames.back() = written_;
        return {.whole = true, .error = 0, .bytes = report.size()};
    }
    platform::ReportTransfer Read(platform::HidHandle device, platform::Report& report) override {
        Note('r', device);
        if (!answers_) answers_ = answer ? answer(written_) : std::deque<Bytes>{};
        if (answers_->empty()) return {};
        report.fill(0);
        std::ranges::copy(answers_->front(), report.begin() + 1);
        answers_->pop_front();
        return {.whole = true, .error = 0, .bytes = platform::kReportPayload};
    }
    void Cancel(platform::HidHandle device) override { Note('a', device); }
    void Close(platform::HidHandle device) override { Note('c', device); }

  private:
    static constexpr platform::HidHandle kHandle = 7;
    void Note(char call, platform::HidHandle device) { calls += device == kHandle ? call : '?'; }

    Bytes written_;
    std::optional<std::deque<Bytes>> answers_;
};

}  // namespace vento::test
