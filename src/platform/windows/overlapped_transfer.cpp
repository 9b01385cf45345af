#include "platform/windows/overlapped_transfer.h"

#include <system_error>

#include "platform/windows/system.h"

namespace vento::platform {
namespace {

constexpr DWORD kBoundInMilliseconds = 1000;
/// How long a transfer that was cancelled may take to end.
constexpr DWORD kCancelGraceInMilliseconds = 200;

}  // namespace

/// All that the system writes to while a transfer is under way.
struct ReportTransfers::Record {
    Record() : event(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
        if (!event) {
            throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(),
                                    "CreateEvent");
        }
    }

    /// Ready for the next transfer.
    OVERLAPPED& Anew() {
        overlapped = {};
        overlapped.hEvent = event.Get();
        return overlapped;
    }

    [[nodiscard]] bool EndsWithin(DWORD milliseconds) const {
        return ::WaitForSingleObject(event.Get(), milliseconds) == WAIT_OBJECT_0;
    }

    OVERLAPPED overlapped{};
    OwnedHandle event;
    Report report{};
};

ReportTransfers::ReportTransfers() : current_(std::make_unique<Record>()) {}

ReportTransfers::~ReportTransfers() {
    for (std::unique_ptr<Record>& each : retired_) {
        if (!each->EndsWithin(0)) static_cast<void>(each.release());
    }
}

ReportTransfer ReportTransfers::Write(HANDLE device, const Report& report) {
    OVERLAPPED& transfer = current_->Anew();
    current_->report = report;
    return Complete(device, ::WriteFile(device, current_->report.data(),
                                        static_cast<DWORD>(current_->report.size()), nullptr, &transfer));
}

ReportTransfer ReportTransfers::Read(HANDLE device, Report& report) {
    OVERLAPPED& transfer = current_->Anew();
    const ReportTransfer result =
        Complete(device, ::ReadFile(device, current_->report.data(),
                                    static_cast<DWORD>(current_->report.size()), nullptr, &transfer));
    if (result.whole) report = current_->report;
    return result;
}

/// Waits for the end of the transfer that `begun`, the result of WriteFile or ReadFile, tells of.
ReportTransfer ReportTransfers::Complete(HANDLE device, BOOL begun) {
    DWORD error = begun == 0 ? ::GetLastError() : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING) return {.error = static_cast<int>(error)};
    if (error == ERROR_IO_PENDING && !current_->EndsWithin(kBoundInMilliseconds)) {
        ::CancelIoEx(device, &current_->overlapped);
        if (!current_->EndsWithin(kCancelGraceInMilliseconds)) {
            Retire();
            return {.error = WAIT_TIMEOUT};
        }
    }
    DWORD count = 0;
    const bool good = ::GetOverlappedResult(device, &current_->overlapped, &count, FALSE) != 0;
    error = good ? ERROR_SUCCESS : ::GetLastError();
    if (error == ERROR_OPERATION_ABORTED) error = WAIT_TIMEOUT;
    return {.whole = good && count == sizeof(Report), .error = static_cast<int>(error), .bytes = count};
}

/// Leaves the current record to the system until its event is set, and gets a new one.
void ReportTransfers::Retire() {
    std::erase_if(retired_, [](const auto& each) { return each->EndsWithin(0); });
    retired_.push_back(std::exchange(current_, nullptr));
    current_ = std::make_unique<Record>();
}

}  // namespace vento::platform
