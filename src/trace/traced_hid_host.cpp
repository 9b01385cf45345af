#include "trace/traced_hid_host.h"

namespace vento {

using platform::ForwardingHidHost;
using platform::HidHandle;
using platform::OpenAnswer;
using platform::OpenOutcome;
using platform::Report;
using platform::ReportTransfer;

void TracedHidHost::Before() const {
    if (before_) before_();
}

void TracedHidHost::Search(const std::function<bool(std::string_view path)>& visit) {
    Before();
    ++cycle_;
    found_ = false;
    ForwardingHidHost::Search(visit);
    if (!found_ && trace_ != nullptr) trace_->Search(cycle_, std::nullopt);
}

OpenAnswer TracedHidHost::Open(std::string_view path, platform::Wanted wanted) {
    const OpenAnswer answer = ForwardingHidHost::Open(path, wanted);
    if (answer.outcome == OpenOutcome::opened && !found_) {
        found_ = true;
        traced_ = answer.handle;
        if (trace_ != nullptr) trace_->Search(cycle_, answer.identity);
    }
    return answer;
}

ReportTransfer TracedHidHost::Write(HidHandle device, const Report& report) {
    Before();
    const ReportTransfer transfer = ForwardingHidHost::Write(device, report);
    if (trace_ != nullptr) trace_->Write(cycle_, transfer, report);
    return transfer;
}

ReportTransfer TracedHidHost::Read(HidHandle device, Report& report) {
    Before();
    const ReportTransfer transfer = ForwardingHidHost::Read(device, report);
    if (trace_ != nullptr) trace_->Read(cycle_, transfer, report);
    return transfer;
}

// Runs in destructors, on the way out of what `before` has thrown too.
void TracedHidHost::Close(HidHandle device) {
    ForwardingHidHost::Close(device);
    if (traced_ != device) return;
    traced_.reset();
    if (trace_ != nullptr) trace_->Close(cycle_);
}

}  // namespace vento
