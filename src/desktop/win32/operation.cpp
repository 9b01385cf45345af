#include "desktop/win32/operation.h"

#include <system_error>
#include <utility>

namespace vento::desktop::win32 {
namespace {

// A timer's message comes every 10 to 16 ms, and only when there is no other: the handler gets half of the
// time at least, and input is answered within one such turn.
constexpr std::chrono::milliseconds kTimerTurn{20};

[[noreturn]] void ThrowLastError(const char* call) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), call);
}

}  // namespace

Operation::Operation(std::function<void()> changed)
    : changed_(std::move(changed)), loop_(::ConvertThreadToFiberEx(nullptr, FIBER_FLAG_FLOAT_SWITCH)) {
    if (loop_ == nullptr) ThrowLastError("ConvertThreadToFiberEx");
}

Operation::~Operation() {
    if (fiber_ != nullptr) ::DeleteFiber(fiber_);
    ::ConvertFiberToThread();
}

void Operation::Begin(std::function<void()> handler) {
    if (Running() || abandoned_) return;
    handler_ = std::move(handler);
    done_ = false;
    fiber_ = ::CreateFiberEx(0, 0, FIBER_FLAG_FLOAT_SWITCH, Run, this);
    if (fiber_ == nullptr) ThrowLastError("CreateFiberEx");
    changed_();
}

void CALLBACK Operation::Run(void* self) {
    auto& operation = *static_cast<Operation*>(self);
    try {
        operation.handler_();
    } catch (const Abandoned&) {  // unwound, as it should be
    } catch (...) {
        operation.failure_ = std::current_exception();
    }
    operation.done_ = true;
    operation.Suspend();  // for good
}

void Operation::Resume() {
    resumedByLoop_ = true;
    turnEnd_ = {};
    if (errand_ != nullptr) {
        if (!abandoned_) (*errand_)();
        errand_ = nullptr;  // only now: the loops that it ran were not to resume the handler
    }
    Switch();
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void Operation::ResumeForAWhile() {
    if (std::exchange(resumedByLoop_, false) || onFiber_ || errand_ != nullptr) return;
    turnEnd_ = Clock::now() + kTimerTurn;
    Switch();
}

void Operation::Switch() {
    if (!Running() || onFiber_) return;
    onFiber_ = true;
    ::SwitchToFiber(fiber_);
    onFiber_ = false;
    if (!done_) return;
    ::DeleteFiber(std::exchange(fiber_, nullptr));
    changed_();
}

void Operation::Suspend() {
    ::SwitchToFiber(loop_);
}

void Operation::Yield() {
    if (!onFiber_) return;
    if (!abandoned_ && Clock::now() < turnEnd_) return;
    Suspend();
    if (abandoned_) throw Abandoned{};
}

void Operation::DoInLoop(const std::function<void()>& errand) {
    if (!onFiber_) return errand();
    errand_ = &errand;
    while (errand_ != nullptr)
        Suspend();
}

}  // namespace vento::desktop::win32
