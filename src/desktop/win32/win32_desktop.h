#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/desktop.h"
#include "platform/windows/system.h"

namespace vento::desktop::win32 {

/// The desktop as the panel asks for it.
class Win32Desktop final : public platform::Desktop {
  public:
    /// The window that boxes and dialogs belong to, and whose keys are handled as a dialog's.
    void SetWindow(HWND window) { window_ = window; }

    /// Handles events until the program is over.
    void Run();

    void Yield() override;
    void ShowMessage(std::string_view text, std::string_view detail) override;
    [[nodiscard]] std::optional<std::string> ChooseFile(std::string_view title,
                                                        std::string_view filter) override;
    [[nodiscard]] std::string ActiveFormName() const override { return "FormWeb"; }
    [[nodiscard]] platform::TwipSize ScreenSize() const override;
    [[nodiscard]] std::optional<std::string> LanguageAbbreviation() override;
    void EndProgram() override;

  private:
    void Handle(MSG& message) const;

    HWND window_ = nullptr;
    std::wstring latestFile_;
};

}  // namespace vento::desktop::win32
