#include "platform/windows/report_transfer.h"

namespace vento::platform {
namespace {

constexpr DWORD kBoundInMilliseconds = 1000;

/// Waits for the end of a transfer that `begun`, the result of WriteFile or ReadFile, tells of. True if all
/// the bytes of a report went over.
bool Complete(HANDLE device, OVERLAPPED& transfer, BOOL begun) {
    const bool pending = begun == 0 && ::GetLastError() == ERROR_IO_PENDING;
    if (begun == 0 && !pending) return false;
    if (pending && ::WaitForSingleObject(transfer.hEvent, kBoundInMilliseconds) != WAIT_OBJECT_0) {
        ::CancelIo(device);
    }
    DWORD count = 0;
    return ::GetOverlappedResult(device, &transfer, &count, TRUE) != 0 && count == sizeof(Report);
}

}  // namespace

bool WriteWholeReport(HANDLE device, HANDLE completed, const Report& report) {
    OVERLAPPED transfer{};
    transfer.hEvent = completed;
    return Complete(
        device, transfer,
        ::WriteFile(device, report.data(), static_cast<DWORD>(report.size()), nullptr, &transfer));
}

bool ReadWholeReport(HANDLE device, HANDLE completed, Report& report) {
    OVERLAPPED transfer{};
    transfer.hEvent = completed;
    Report incoming{};
    if (!Complete(
            device, transfer,
            ::ReadFile(device, incoming.data(), static_cast<DWORD>(incoming.size()), nullptr, &transfer))) {
        return false;
    }
    report = incoming;
    return true;
}

}  // namespace vento::platform
