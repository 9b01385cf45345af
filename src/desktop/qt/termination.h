#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <utility>

namespace vento::desktop::qt {

/// Turns the signals by which a desktop or a shell asks a program to end into an event. Those that were
/// ignored when the program began stay ignored. To be made before the application object: the threads that
/// the toolkit starts must not take the signals.
class Termination {
  public:
    using Handler = std::function<void()>;

    Termination();
    Termination(const Termination&) = delete;
    Termination& operator=(const Termination&) = delete;
    Termination(Termination&&) = delete;
    Termination& operator=(Termination&&) = delete;
    ~Termination();

    /// From here on `handler` runs in the event loop when such a signal has come, in place of the one before
    /// it. Needs an application object.
    void Watch(Handler handler);

    /// Gives way to another handler, which may need what does not live as long, and comes back at its end.
    class Instead {
      public:
        Instead(Termination& termination, Handler handler)
            : termination_(termination), before_(std::exchange(termination.handler_, std::move(handler))) {}
        Instead(const Instead&) = delete;
        Instead& operator=(const Instead&) = delete;
        Instead(Instead&&) = delete;
        Instead& operator=(Instead&&) = delete;
        ~Instead() { termination_.handler_ = std::move(before_); }

      private:
        Termination& termination_;
        Handler before_;
    };

  private:
    int descriptor_ = -1;
    Handler handler_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace vento::desktop::qt
