#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "console/commands.h"
#include "programme/loader.h"

namespace vento::console {

/// What a programme has for a column: the texts that the loader takes, UTF-8.
struct ColumnTexts {
    std::string label;
    std::string listA;
    std::string listB;

    friend bool operator==(const ColumnTexts&, const ColumnTexts&) = default;
};

/// Nothing for a column without a line.
using ProgrammeTexts = std::array<std::optional<ColumnTexts>, kColumns>;

/// The files of this machine, and standard input, which is read once, as the one with the name "-".
class FilesAndInput final : public platform::Files {
  public:
    explicit FilesAndInput(const platform::Terminal& terminal);

    [[nodiscard]] std::string ReadAll(const std::string& path, std::size_t most) override;
    void Delete(const std::string& path) override { files_->Delete(path); }
    [[nodiscard]] std::filesystem::path ProgramFolder() override { return files_->ProgramFolder(); }
    [[nodiscard]] std::size_t ReadSection(std::string_view section, std::span<char> buffer,
                                          const std::filesystem::path& file) override {
        return files_->ReadSection(section, buffer, file);
    }

  private:
    const platform::Terminal& terminal_;
    std::unique_ptr<platform::Files> files_;
    std::optional<std::string> input_;
};

/// A programme and the form that it was in.
struct ReadProgramme {
    ProgrammeTexts texts;
    bool fromJson = false;
};

/// Reads a programme file, or the same as JSON. Throws Failure.
[[nodiscard]] ReadProgramme ReadProgrammeTexts(const Console& console, const std::string& path);

/// `columns`, with the lists as numbers where that loses nothing.
[[nodiscard]] nlohmann::ordered_json ProgrammeFields(const ProgrammeTexts& texts);

/// The programme file from which the loader takes these texts, in Windows-1252.
[[nodiscard]] std::string ProgrammeFileOf(const ProgrammeTexts& texts);

}  // namespace vento::console
