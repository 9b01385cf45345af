#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"

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
    std::vector<std::string> messages;  // with their details behind a line feed, if they have any
    std::string whyAwake;               // of all that were to keep the machine from sleeping
    std::deque<std::optional<std::string>> choices;  // of the file dialog, in order
    std::string dialog;                              // title and filter of the latest
    std::optional<std::string> language = "ENG";
    std::string activeForm = "FormWeb";
    int ends = 0;

    void Yield() override { onYield(++yields); }
    void ShowMessage(std::string_view text, std::string_view details) override {
        messages.push_back(std::string(text) + (details.empty() ? "" : "\n") + std::string(details));
    }
    std::unique_ptr<platform::SleepInhibitor> InhibitSleep(std::string_view reason) override {
        whyAwake += reason;
        return nullptr;
    }
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

}  // namespace vento::test
