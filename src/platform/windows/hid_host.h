#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "platform/hid_host.h"
#include "platform/windows/hid_functions.h"
#include "platform/windows/hid_hold.h"
#include "platform/windows/overlapped_transfer.h"

namespace vento::platform {

/// The HID interfaces that Windows lists. Foreign ones whose path says so are left alone, and so is a
/// keyboard; for who the others are, they have to be opened. No device is kept open from one exchange to the
/// next; in a conversation the transmitter is locked, see WindowsHidHold.
class WindowsHidHost final : public HidHost {
  public:
    /// Throws std::system_error if the system is out of handles, or has no HID.
    WindowsHidHost() = default;

    [[nodiscard]] std::shared_ptr<Conversation> Converse() override;
    void Search(const std::function<bool(std::string_view path)>& visit) override;
    /// Opens a wanted device for a moment, which is the only way to know on Windows whether that would work.
    /// Nothing is sent, and foreign interfaces stay closed.
    [[nodiscard]] Presence Detect(Wanted wanted) override;
    [[nodiscard]] OpenAnswer Open(std::string_view path, Wanted wanted) override;
    [[nodiscard]] std::optional<ReportLengths> Lengths(HidHandle device) override;
    ReportTransfer Write(HidHandle device, const Report& report) override;
    ReportTransfer Read(HidHandle device, Report& report) override;
    void Cancel(HidHandle device) override;
    void Close(HidHandle device) override;

  private:
    HidFunctions hid_ = LoadHidFunctions();
    ReportTransfers transfers_;
    std::weak_ptr<WindowsHidHold> hold_;  ///< of the conversation, if there is one
};

/// The ids in the path of an interface, "...vid_04d8&pid_0001..." in either case; nothing if it has none.
[[nodiscard]] std::optional<HidIdentity> IdentityInPath(std::string_view path);

/// Whether the path is that of a keyboard, at the end of which Windows puts "\\kbd".
[[nodiscard]] bool IsKeyboardPath(std::string_view path);

}  // namespace vento::platform
