#pragma once

#include <bitset>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/hid_host.h"

namespace vento::platform {

/// The HID interfaces that the kernel shows as hidraw nodes, in the order of their numbers.
///
/// The identity of a device is read from sysfs, so that one that is not wanted is never opened, and a
/// sleeping keyboard not woken. Nothing is remembered from one search to the next, and no search but the
/// first takes memory from the heap. Searches do not nest.
class HidrawHost final : public HidHost {
  public:
    /// Where the nodes and the kernel's list of them are looked for; a test may have them elsewhere.
    explicit HidrawHost(std::string_view nodeFolder = "/dev",
                        std::string_view classFolder = "/sys/class/hidraw");

    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] OpenAnswer Open(std::string_view path, Wanted wanted) override;
    /// The kernel bounds the time that this takes; for a USB device, at 5 seconds.
    ReportTransfer Write(HidHandle device, const Report& report) override;
    ReportTransfer Read(HidHandle device, Report& report) override;
    /// Does nothing: no transfer of this program outlives the call that began it.
    void Cancel(HidHandle device) override;
    void Close(HidHandle device) override;

  private:
    [[nodiscard]] std::optional<HidIdentity> ListedIdentity(std::string_view number);

    std::string classFolder_;
    std::string nodePrefix_;  ///< what stands before the number in the name of a node
    std::string path_;        ///< of the node that a search is at; keeps its room, like the next
    std::string classPath_;   ///< of the entry that leads to a node's device
};

}  // namespace vento::platform
