#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "console/notices.h"
#include "platform/desktop.h"
#include "platform/terminal.h"
#include "text/language.h"

namespace vento::console {

/// A desktop without a window. Its message boxes are lines on standard error that nobody has to close; its
/// events are the operator's interrupts.
class ConsoleDesktop final : public platform::Desktop {
  public:
    /// `terminal` and `notices` outlive this.
    ConsoleDesktop(const platform::Terminal& terminal, Notices& notices, Language language)
        : terminal_(terminal), notices_(notices), language_(language) {}

    /// Throws EndedAtOnce if that is demanded. Otherwise an interrupt that came in since the latest yield
    /// goes to the handler.
    void Yield() override;
    void ShowMessage(std::string_view text, std::string_view detail) override;
    [[nodiscard]] std::optional<std::string> ChooseFile(std::string_view, std::string_view) override {
        return std::nullopt;
    }
    [[nodiscard]] std::string ActiveFormName() const override { return "FormWeb"; }
    [[nodiscard]] platform::TwipSize ScreenSize() const override { return {}; }
    [[nodiscard]] std::optional<std::string> LanguageAbbreviation() override;
    void EndProgram() override {}

    void OnInterrupt(std::function<void()> handler) { onInterrupt_ = std::move(handler); }

    /// The text of the latest message box; nothing if there was none.
    [[nodiscard]] const std::optional<std::string>& LatestMessage() const { return latestMessage_; }
    [[nodiscard]] const std::string& LatestDetail() const { return latestDetail_; }

  private:
    const platform::Terminal& terminal_;
    Notices& notices_;
    Language language_;
    std::function<void()> onInterrupt_;
    int interruptsHandled_ = 0;
    std::optional<std::string> latestMessage_;
    std::string latestDetail_;
};

}  // namespace vento::console
