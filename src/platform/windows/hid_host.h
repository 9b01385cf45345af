#pragma once

#include "platform/windows/system.h"
// It needs that before it.
#include <setupapi.h>

#include <string>

#include "platform/hid_host.h"
#include "platform/windows/owned_handle.h"

namespace vento::platform {

/// The HID interfaces that Windows lists. It says who a device is only once that is open, so that foreign
/// ones are opened, too, until a wanted one is found. Nothing is remembered from one search to the next.
class WindowsHidHost final : public HidHost {
  public:
    /// Throws std::system_error if the system is out of handles.
    WindowsHidHost();
    WindowsHidHost(const WindowsHidHost&) = delete;
    WindowsHidHost& operator=(const WindowsHidHost&) = delete;
    WindowsHidHost(WindowsHidHost&&) = delete;
    WindowsHidHost& operator=(WindowsHidHost&&) = delete;
    ~WindowsHidHost() override { EndSearch(); }

    void BeginSearch() override;
    [[nodiscard]] bool NextInterface() override;
    [[nodiscard]] std::string InterfaceName() const override { return path_; }
    [[nodiscard]] OpenAnswer OpenInterface(bool (*wanted)(HidIdentity)) override;
    void EndSearch() override;

    /// This, too, takes 1 second at the most.
    [[nodiscard]] bool WriteReport(HidHandle device, const Report& report) override;
    [[nodiscard]] bool ReadReport(HidHandle device, Report& report) override;
    void Cancel(HidHandle device) override;
    void Close(HidHandle device) override;

    [[nodiscard]] std::string Advice(OpenOutcome outcome, Language language) const override;

  private:
    GUID hidClass_{};
    HDEVINFO present_ = INVALID_HANDLE_VALUE;
    DWORD next_ = 0;         ///< index of the interface behind the current one
    std::string path_;       ///< of the current interface; empty if the system doesn't give it
    OwnedHandle completed_;  ///< event of the one transfer that is under way
};

}  // namespace vento::platform
