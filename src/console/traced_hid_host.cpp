#include "console/traced_hid_host.h"

#include "console/failure.h"

namespace vento::console {

using platform::HidHandle;
using platform::OpenAnswer;
using platform::OpenOutcome;
using platform::Report;

void TracedHidHost::BeginSearch() {
    EndIfDemanded(terminal_);
    ++cycle_;
    found_ = false;
    host_.BeginSearch();
}

OpenAnswer TracedHidHost::OpenInterface(bool (*wanted)(platform::HidIdentity)) {
    const OpenAnswer answer = host_.OpenInterface(wanted);
    if (answer.outcome == OpenOutcome::opened && !found_) {
        found_ = true;
        traced_ = answer.handle;
        if (trace_ != nullptr) trace_->Search(cycle_, answer.identity);
    }
    return answer;
}

void TracedHidHost::EndSearch() {
    host_.EndSearch();
    if (!found_ && trace_ != nullptr) trace_->Search(cycle_, std::nullopt);
}

bool TracedHidHost::WriteReport(HidHandle device, const Report& report) {
    EndIfDemanded(terminal_);
    const bool ok = host_.WriteReport(device, report);
    if (trace_ != nullptr) trace_->Write(cycle_, ok, report);
    return ok;
}

bool TracedHidHost::ReadReport(HidHandle device, Report& report) {
    EndIfDemanded(terminal_);
    const bool ok = host_.ReadReport(device, report);
    if (trace_ != nullptr) trace_->Read(cycle_, ok ? &report : nullptr);
    return ok;
}

// Runs in destructors, on the way out of a demanded end too.
void TracedHidHost::Close(HidHandle device) {
    host_.Close(device);
    if (traced_ != device) return;
    traced_.reset();
    if (trace_ != nullptr) trace_->Close(cycle_);
}

}  // namespace vento::console
