#include "desktop/qt/termination.h"

#include <pthread.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): for sigset_t
#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

namespace vento::desktop::qt {

Termination::Termination() {
    sigset_t set{};
    sigemptyset(&set);
    for (const int each : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&set, each);
    descriptor_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    // Without the descriptor the signals keep their plain effect, which is to end the program.
    if (descriptor_ >= 0) pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

Termination::~Termination() {
    notifier_.reset();
    if (descriptor_ >= 0) ::close(descriptor_);
}

void Termination::Watch(const std::function<void()>& handler) {
    if (descriptor_ < 0) return;
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, handler] {
        signalfd_siginfo info{};
        while (::read(descriptor_, &info, sizeof info) > 0)
            continue;
        handler();
    });
}

}  // namespace vento::desktop::qt
