#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "console/commands.h"
#include "console/failure.h"
#include "console/notices.h"
#include "fuzzing.h"
#include "platform/terminal.h"

namespace vento::fuzzing {

/// Nobody at a terminal, and bytes on standard input.
class PipedInput final : public platform::Terminal {
  public:
    explicit PipedInput(std::string_view bytes = {}) : bytes_(bytes) {}

    [[nodiscard]] bool CanRedraw() const override { return false; }
    [[nodiscard]] std::size_t Columns() const override { return 80; }
    [[nodiscard]] int Interrupts() const override { return 0; }
    [[nodiscard]] bool CanAsk() const override { return false; }
    [[nodiscard]] std::size_t ReadInput(std::span<char> buffer) const override {
        const std::size_t count = bytes_.copy(buffer.data(), buffer.size());
        bytes_.remove_prefix(count);
        return count;
    }
    [[nodiscard]] std::optional<int> TerminationRequested() const override { return std::nullopt; }

  private:
    mutable std::string_view bytes_;
};

/// What a command of ventoctl comes to; a status that `allowed` does not name ends the target.
inline console::Answer RunCommand(const console::CommandEntry& command, std::string_view input,
                                  std::initializer_list<int> allowed,
                                  const std::vector<std::string>& arguments = {"-"}) {
    console::Options options;
    options.command = &command;
    options.arguments = arguments;
    options.quiet = true;
    const PipedInput terminal(input);
    console::Notices notices(terminal, Language::english, true);
    console::Answer answer;
    try {
        command.run({options, terminal, notices, Language::english}, answer);
    } catch (const console::Failure& failure) {
        RequireReadable(failure.Reason());
        answer.status = failure.Status();
    }
    Require(std::ranges::find(allowed, answer.status) != allowed.end(),
            std::string(command.name) + " ends with " + std::to_string(answer.status));
    return answer;
}

}  // namespace vento::fuzzing
