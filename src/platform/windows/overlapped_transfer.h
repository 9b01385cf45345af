#pragma once

#include <memory>
#include <vector>

#include "platform/hid_host.h"
#include "platform/windows/owned_handle.h"

namespace vento::platform {

/// Moves reports over devices that are open for overlapped transfers, and gives one up that takes too long.
class ReportTransfers {
  public:
    /// Throws std::system_error if the system is out of handles.
    ReportTransfers();
    ReportTransfers(const ReportTransfers&) = delete;
    ReportTransfers& operator=(const ReportTransfers&) = delete;
    ReportTransfers(ReportTransfers&&) = delete;
    ReportTransfers& operator=(ReportTransfers&&) = delete;
    /// What the system has not let go of by now is its for good.
    ~ReportTransfers();

    [[nodiscard]] ReportTransfer Write(HANDLE device, const Report& report);
    /// If the report is whole, `report` holds it; it is unchanged otherwise.
    [[nodiscard]] ReportTransfer Read(HANDLE device, Report& report);

  private:
    struct Record;

    [[nodiscard]] ReportTransfer Complete(HANDLE device, BOOL begun);
    void Retire();

    std::unique_ptr<Record> current_;
    std::vector<std::unique_ptr<Record>> retired_;  ///< given up, and the system may still write to them
};

}  // namespace vento::platform
