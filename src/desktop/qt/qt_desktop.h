#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/desktop.h"

namespace vento::desktop::qt {

/// The desktop as the panel asks for it, through the toolkit.
class QtDesktop final : public platform::Desktop {
  public:
    /// The window that boxes and dialogs belong to, for as long as it is there.
    void SetWindow(QWidget* window) { window_ = window; }

    /// Notes a question that came by the accessibility bus.
    void CountQuestion() { ++questions_; }

    void Yield() override;
    void ShowMessage(std::string_view text, std::string_view detail) override;
    [[nodiscard]] std::optional<std::string> ChooseFile(std::string_view title,
                                                        std::string_view filter) override;
    [[nodiscard]] std::string ActiveFormName() const override { return "FormWeb"; }
    [[nodiscard]] platform::TwipSize ScreenSize() const override;
    [[nodiscard]] std::optional<std::string> LanguageAbbreviation() override;
    void EndProgram() override;

  private:
    QPointer<QWidget> window_;
    QString latestFile_;
    std::uint64_t questions_ = 0;
    QElapsedTimer sinceTurn_;
};

/// A "description|pattern|" run as the toolkit's name filters.
[[nodiscard]] QStringList NameFilters(std::string_view filter);

}  // namespace vento::desktop::qt
