#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "desktop/qt/look.h"
#include "platform/desktop.h"

namespace vento::desktop::qt {

/// The desktop as the panel asks for it, through the toolkit.
class QtDesktop final : public platform::Desktop {
  public:
    explicit QtDesktop(const Look& look) : look_(look) {}

    /// The window that boxes and dialogs belong to, for as long as it is there. `beforeTurn` is called before
    /// the event loop has a turn in the middle of a handler, while the window is there.
    void SetWindow(QWidget* window, std::function<void()> beforeTurn) {
        window_ = window;
        beforeTurn_ = [this, call = std::move(beforeTurn)] {
            if (window_) call();
        };
    }

    /// Notes a question that came by the accessibility bus.
    void CountQuestion() { ++questions_; }

    void Yield() override;
    void ShowMessage(std::string_view text, std::string_view detail) override;
    [[nodiscard]] std::optional<std::string> ChooseFile(std::string_view title,
                                                        std::string_view filter) override;
    [[nodiscard]] std::string ActiveFormName() const override { return "FormWeb"; }
    [[nodiscard]] platform::TwipSize ScreenSize() const override;
    [[nodiscard]] std::optional<std::string> LanguageAbbreviation() override;
    [[nodiscard]] std::unique_ptr<platform::SleepInhibitor> InhibitSleep(std::string_view reason) override;
    void EndProgram() override;

  private:
    const Look& look_;
    QPointer<QWidget> window_;
    std::function<void()> beforeTurn_;
    QString latestFile_;
    std::uint64_t questions_ = 0;
    QElapsedTimer sinceTurn_;
};

/// A "description|pattern|" run as the toolkit's name filters.
[[nodiscard]] QStringList NameFilters(std::string_view filter);

}  // namespace vento::desktop::qt
