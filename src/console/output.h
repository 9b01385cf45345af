#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "console/commands.h"
#include "platform/replacement.h"

namespace vento::console {

/// `-f`, of every command that writes a file.
inline constexpr OptionEntry kForceOption{
    "force",
    'f',
    OptionEntry::Value::none,
    {"", ""},
    {"Sovrascrive DEST senza chiedere", "Overwrite DEST without asking"},
    [](Options& options, std::string_view) { return options.force = true; }};

/// Where the result of a command goes: a file, which is replaced whole or not at all, or standard output for
/// "-".
class Output {
  public:
    /// Another file than `source` is overwritten with `--force`, or if the operator agrees. Throws Failure,
    /// also if DEST can't be written or `--json` wants standard output too.
    Output(const Console& console, std::string path, const std::string& source);

    [[nodiscard]] bool IsStandard() const { return !replacement_; }

    /// An interrupt counts up to the moment in which the old file goes. Throws Failure and EndedAtOnce.
    void Save(std::span<const std::uint8_t> bytes, Answer& answer);

    /// What came of the command, in a line: beside the result if that is on standard output.
    void Tell(const Sentence& summary, Answer& answer) const;

  private:
    const Console& console_;
    std::string path_;
    std::unique_ptr<platform::Replacement> replacement_;  ///< null for standard output
};

}  // namespace vento::console
