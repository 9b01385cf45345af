#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace vento::desktop::qt {

/// Turns the signals by which a desktop or a shell asks a program to end into an event. To be made before the
/// application object: the threads that the toolkit starts must not take the signals.
class Termination {
  public:
    Termination();
    Termination(const Termination&) = delete;
    Termination& operator=(const Termination&) = delete;
    Termination(Termination&&) = delete;
    Termination& operator=(Termination&&) = delete;
    ~Termination();

    /// From here on `handler` runs in the event loop when such a signal has come. Needs an application
    /// object.
    void Watch(const std::function<void()>& handler);

  private:
    int descriptor_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace vento::desktop::qt
