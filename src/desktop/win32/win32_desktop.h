#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "desktop/win32/operation.h"
#include "platform/desktop.h"
#include "platform/windows/system.h"

namespace vento::desktop::win32 {

/// A box with one OK button, and `detail` below `text` in smaller type.
void ShowBox(HWND owner, std::string_view text, std::string_view detail);

/// The desktop as the panel asks for it.
class Win32Desktop final : public platform::Desktop {
  public:
    /// The window that boxes and dialogs belong to, and whose keys are handled as a dialog's.
    void SetWindow(HWND window) { window_ = window; }

    /// Handles events until the program is over. Throws what an operation threw.
    void Run();

    /// Runs a handler of the panel that yields, beside the loop. Nothing while another one runs.
    void Operate(std::function<void()> handler) { operation_.Begin(std::move(handler)); }

    /// `observer` is called when a handler has begun or ended.
    void ObserveOperation(std::function<void()> observer) { observer_ = std::move(observer); }

    [[nodiscard]] bool Operating() const { return operation_.Running(); }

    /// A shutdown would cost an operation with a remote.
    [[nodiscard]] bool BlocksShutdown() const { return shutdownBlocked_; }

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
    static void CALLBACK Tick(HWND window, UINT message, UINT_PTR self, DWORD time);
    void Handle(MSG& message) const;
    void OperationChanged() const;

    HWND window_ = nullptr;
    bool over_ = false;
    bool shutdownBlocked_ = false;
    std::function<void()> observer_;
    Operation operation_{[this] { OperationChanged(); }};
    std::wstring latestFile_;
};

}  // namespace vento::desktop::win32
