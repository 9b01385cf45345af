#pragma once

#include <optional>
#include <string_view>

#include "platform/hid_host.h"
#include "platform/windows/owned_handle.h"

namespace vento::platform {

/// The HID interfaces that Windows lists. It says who a device is only once that is open, so that foreign
/// ones are opened, too, until a wanted one is found. Nothing is remembered from one search to the next.
class WindowsHidHost final : public HidHost {
  public:
    /// Throws std::system_error if the system is out of handles.
    WindowsHidHost();

    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] OpenAnswer Open(std::string_view path, Wanted wanted) override;
    /// This, too, takes 1 second at the most. Both come back when the transfer has ended, never before: one
    /// that takes too long is cancelled and waited for, since until then the report belongs to the system.
    ReportTransfer Write(HidHandle device, const Report& report) override;
    ReportTransfer Read(HidHandle device, Report& report) override;
    void Cancel(HidHandle device) override;
    void Close(HidHandle device) override;

  private:
    OwnedHandle completed_;  ///< event of the one transfer that is under way
};

/// The ids in the path of an interface, "...vid_04d8&pid_0001..." in either case; nothing if it has none.
[[nodiscard]] std::optional<HidIdentity> IdentityInPath(std::string_view path);

}  // namespace vento::platform
