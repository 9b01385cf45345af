#pragma once

#include <cstdint>
#include <memory>
#include <set>

#include "platform/hid_host.h"

namespace vento::platform {

/// The HID interfaces that the browser's user has granted to the page, by WebHID. An interface stays open,
/// and locked against other pages, from its first open in a conversation to the conversation's end, since an
/// open takes tens of milliseconds; outside one, to its close. Search and Detect come back at once; Open,
/// Write and Read suspend.
class WebHidHost final : public HidHost {
  public:
    [[nodiscard]] std::shared_ptr<Conversation> Converse() override;
    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] OpenAnswer Open(std::string_view path, Wanted wanted) override;
    [[nodiscard]] std::optional<ReportLengths> Lengths(HidHandle device) override;
    /// Whether one is forbidden is known from its latest open.
    [[nodiscard]] Presence Detect(Wanted wanted) override;
    ReportTransfer Write(HidHandle device, const Report& report) override;
    ReportTransfer Read(HidHandle device, Report& report) override;
    /// Nothing is ever under way: each transfer has come to its end or was given up.
    void Cancel(HidHandle /*device*/) override {}
    void Close(HidHandle device) override;

  private:
    std::weak_ptr<Conversation> conversation_;
    std::set<std::uint32_t> forbidden_;  ///< devices whose latest open was refused for want of permission
};

}  // namespace vento::platform
