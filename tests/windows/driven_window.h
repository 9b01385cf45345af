#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/windows/owned_handle.h"

namespace vento::test {

/// What `condition` gives as soon as it is true; whatever it gives when half a minute has passed.
template <class Condition>
auto Eventually(Condition condition) {
    constexpr DWORD limit = 30'000;
    const ULONGLONG start = ::GetTickCount64();
    for (;;) {
        auto result = condition();
        if (result || ::GetTickCount64() - start > limit) return result;
        ::Sleep(10);
    }
}

/// A running vento.exe, used from outside as another program would: by the system's messages. Texts are
/// UTF-8.
class DrivenWindow {
  public:
    /// Starts the program with this behind its name, and with what it is to simulate.
    DrivenWindow(const std::string& commandLine, const std::string& simulate);
    DrivenWindow(const DrivenWindow&) = delete;
    DrivenWindow& operator=(const DrivenWindow&) = delete;
    DrivenWindow(DrivenWindow&&) = delete;
    DrivenWindow& operator=(DrivenWindow&&) = delete;
    /// Leaves nothing of the program, if it has not ended by itself.
    ~DrivenWindow();

    /// The form's window; null when there is none.
    [[nodiscard]] HWND Form() const { return form_; }

    /// A control of the form, visible or not, of this class of the system's, counted from 0 in tab order.
    [[nodiscard]] HWND Control(const wchar_t* windowClass, int index) const;
    /// A button by its caption, without the mark of its letter; null if none is visible.
    [[nodiscard]] HWND Button(const std::string& caption) const;
    /// Presses a button, once it is there, and doesn't wait for what that leads to.
    void Press(const std::string& caption) const;
    [[nodiscard]] std::vector<std::string> Buttons() const;
    [[nodiscard]] std::string Status() const;
    [[nodiscard]] bool AwaitStatus(const std::string& part) const;
    /// The texts of the three lists.
    [[nodiscard]] std::vector<std::string> Items() const;
    /// Where the bar stands; nothing while it is hidden.
    [[nodiscard]] std::optional<int> Bar() const;

    /// A key, pressed in the control that has the focus; with Alt held down if `alt` says so.
    void Type(WPARAM key, bool alt = false) const;
    /// The control that has the focus in the program.
    [[nodiscard]] HWND Focus() const;
    void Drop(const std::wstring& path) const;
    /// As if it had come to a screen of so many dots per inch.
    void ChangeDensity(int dotsPerInch) const;

    /// A box or dialog that has come up, once there is one; null otherwise.
    [[nodiscard]] HWND Dialog() const;
    /// The texts in it that can't be changed.
    [[nodiscard]] std::string TextsIn(HWND dialog) const;
    /// Presses its first button and waits for its end.
    void Answer(HWND dialog) const;
    /// Fills in a file dialog, or cancels it if `file` is empty; gives back what stood in it.
    [[nodiscard]] std::string Choose(HWND dialog, const std::string& file) const;

    /// The exit status, for which the program has little time; nothing if it goes on.
    [[nodiscard]] std::optional<DWORD> Ends() const;

    /// Asks for a picture of this name in the folder that VENTO_PICTURES names, if there is such a variable,
    /// of whatever is on the screen where the form is.
    void TakePicture(const std::string& name) const;

  private:
    [[nodiscard]] std::vector<HWND> Windows() const;
    /// Memory of the program's with these bytes, which is gone with the program.
    [[nodiscard]] void* Lend(const void* bytes, std::size_t size) const;

    platform::OwnedHandle process_;
    DWORD processId_ = 0;
    HWND form_ = nullptr;
};

[[nodiscard]] std::string TextOf(HWND window);
/// The same without the mark of the letter that presses it.
[[nodiscard]] std::string Caption(HWND control);
/// Where a control stands in its form.
[[nodiscard]] RECT PlaceOf(HWND control);

/// What the user's regional settings say of the language, as long as this lives.
class RegionSetTo {
  public:
    explicit RegionSetTo(const std::string& language);
    RegionSetTo(const RegionSetTo&) = delete;
    RegionSetTo& operator=(const RegionSetTo&) = delete;
    RegionSetTo(RegionSetTo&&) = delete;
    RegionSetTo& operator=(RegionSetTo&&) = delete;
    ~RegionSetTo();

  private:
    std::string before_;
};

}  // namespace vento::test
