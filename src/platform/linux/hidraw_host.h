#pragma once

#include <bitset>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/hid_host.h"
#include "platform/linux/bounded_writer.h"
#include "platform/linux/hidraw_hold.h"

namespace vento::platform {

/// The HID interfaces that the kernel shows as hidraw nodes, in the order of their numbers.
///
/// The identity of a device is read from sysfs, so that one that is not wanted is never opened, and a
/// sleeping keyboard not woken. A system keyboard or mouse is foreign whoever made it. No search but the
/// first takes memory from the heap. Searches do not nest.
///
/// In a conversation the transmitter is held and locked, see HidrawHold. Each open is an own one all the
/// same, with an empty queue of reports.
class HidrawHost final : public HidHost {
  public:
    /// Where the nodes and the kernel's list of them are looked for; a test may have them elsewhere.
    explicit HidrawHost(std::string_view nodeFolder = "/dev",
                        std::string_view classFolder = "/sys/class/hidraw");

    [[nodiscard]] std::shared_ptr<Conversation> Converse() override;
    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] OpenAnswer Open(std::string_view path, Wanted wanted) override;
    [[nodiscard]] std::optional<ReportLengths> Lengths(HidHandle device) override;
    [[nodiscard]] Presence Detect(Wanted wanted) override;
    ReportTransfer Write(HidHandle device, const Report& report) override;
    ReportTransfer Read(HidHandle device, Report& report) override;
    /// Does nothing: no transfer of this program outlives the call that began it.
    void Cancel(HidHandle device) override;
    void Close(HidHandle device) override;

  private:
    [[nodiscard]] std::optional<HidIdentity> ListedIdentity(std::string_view number);
    [[nodiscard]] bool IsSystemInput(std::string_view number);
    void SetClassPath(std::string_view number, std::string_view rest);

    std::string classFolder_;
    std::string nodePrefix_;  ///< what stands before the number in the name of a node
    std::string path_;        ///< of the node that a search is at; keeps its room, like the next
    std::string classPath_;   ///< of what the kernel tells of a node's device
    std::shared_ptr<BoundedWriter> writer_ = std::make_shared<BoundedWriter>();
    std::weak_ptr<HidrawHold> hold_;  ///< of the conversation, if there is one
};

}  // namespace vento::platform
