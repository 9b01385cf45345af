#pragma once

#include <chrono>
#include <exception>
#include <functional>

#include "platform/windows/system.h"

namespace vento::desktop::win32 {

/// A handler of the panel that runs beside the message loop, on a fiber of the same thread. It gives the loop
/// a turn at each `Yield`, and goes on when it is resumed: by the loop itself, or by a timer while a loop of
/// the system's runs in its place (an open menu, a held title bar). Handlers and windows need no locks.
class Operation {
  public:
    /// `changed` is called when an operation has begun and when it has ended, never on the fiber.
    explicit Operation(std::function<void()> changed);
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    Operation(Operation&&) = delete;
    Operation& operator=(Operation&&) = delete;
    ~Operation();

    [[nodiscard]] bool Running() const { return fiber_ != nullptr; }
    [[nodiscard]] bool OnFiber() const { return onFiber_; }

    /// Begins a handler, which takes its first turn when it is resumed. Nothing if one is running.
    void Begin(std::function<void()> handler);

    /// From the program's own loop: runs the handler to its next yield, or what it wants done by this loop.
    /// Throws what the handler threw.
    void Resume();

    /// From a timer: runs the handler for a while, unless the program's own loop has done so since the last
    /// time.
    void ResumeForAWhile();

    /// On the fiber: lets the loop have a turn. Throws to unwind the handler once `Abandon` was called.
    void Yield();

    /// On the fiber: has the program's own loop do something that runs a loop itself, a box for instance, and
    /// waits for it. It is not done any more after `Abandon`.
    void DoInLoop(const std::function<void()>& errand);

    /// The program ends: the handler is unwound at its next turn.
    void Abandon() { abandoned_ = true; }

  private:
    struct Abandoned {};
    using Clock = std::chrono::steady_clock;

    static void CALLBACK Run(void* self);
    void Switch();
    void Suspend();

    std::function<void()> changed_;
    std::function<void()> handler_;
    const std::function<void()>* errand_ = nullptr;
    void* loop_;
    void* fiber_ = nullptr;
    Clock::time_point turnEnd_;
    bool onFiber_ = false;
    bool done_ = false;
    bool abandoned_ = false;
    bool resumedByLoop_ = false;
    std::exception_ptr failure_;
};

}  // namespace vento::desktop::win32
