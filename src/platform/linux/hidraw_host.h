#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/hid_host.h"
#include "platform/linux/hidraw_listing.h"

namespace vento::platform {

/// The HID interfaces that the kernel shows as hidraw nodes, in the order of their numbers.
///
/// Who a device is stands in sysfs, so that one that is not wanted is never opened, and a sleeping keyboard
/// not woken. Nothing is remembered from one search to the next, and no search but the first takes memory
/// from the heap.
class HidrawHost final : public HidHost {
  public:
    /// Where the nodes and the kernel's list of them are looked for; a test may have them elsewhere.
    explicit HidrawHost(std::string_view nodeFolder = "/dev",
                        std::string_view classFolder = "/sys/class/hidraw");

    void BeginSearch() override;
    [[nodiscard]] bool NextInterface() override;
    [[nodiscard]] std::string InterfaceName() const override;
    [[nodiscard]] OpenAnswer OpenInterface(bool (*wanted)(HidIdentity)) override;
    void EndSearch() override;

    /// The kernel bounds the time that this takes; for a USB device, at 5 seconds.
    [[nodiscard]] bool WriteReport(HidHandle device, const Report& report) override;
    [[nodiscard]] bool ReadReport(HidHandle device, Report& report) override;
    /// Does nothing: no transfer of this program outlives the call that began it.
    void Cancel(HidHandle device) override;
    void Close(HidHandle device) override;

    [[nodiscard]] std::string Advice(OpenOutcome outcome, Language language) const override;

  private:
    [[nodiscard]] std::optional<HidIdentity> ListedIdentity();

    std::string classFolder_;
    std::string nodePrefix_;  ///< what stands before the number in the name of a node
    std::string path_;        ///< of the current interface, in one folder or the other; keeps its room
    HidrawNumbers present_;
    std::size_t current_ = 0;  ///< the number of the current interface
    std::size_t next_ = 0;     ///< where the next one is looked for
};

}  // namespace vento::platform
