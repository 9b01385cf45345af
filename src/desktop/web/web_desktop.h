#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/desktop.h"

namespace vento::desktop::web {

/// The desktop as the panel asks for it: the page and its browser.
class WebDesktop final : public platform::Desktop {
  public:
    /// `beforeTurn` is called before the browser has a turn in the middle of a handler, `ended` when the
    /// program is over.
    WebDesktop(std::function<void()> beforeTurn, std::function<void()> ended)
        : beforeTurn_(std::move(beforeTurn)), ended_(std::move(ended)) {}

    void Yield() override;
    void ShowMessage(std::string_view text, std::string_view detail) override;
    [[nodiscard]] std::optional<std::string> ChooseFile(std::string_view title,
                                                        std::string_view filter) override;
    [[nodiscard]] std::string ActiveFormName() const override { return "FormWeb"; }
    [[nodiscard]] platform::TwipSize ScreenSize() const override;
    [[nodiscard]] std::optional<std::string> LanguageAbbreviation() override;
    [[nodiscard]] std::unique_ptr<platform::SleepInhibitor> InhibitSleep(std::string_view reason) override;
    void EndProgram() override { ended_(); }

  private:
    std::function<void()> beforeTurn_;
    std::function<void()> ended_;
};

/// A box as the script takes it.
[[nodiscard]] std::string BoxJson(std::string_view text, std::string_view detail);

}  // namespace vento::desktop::web
