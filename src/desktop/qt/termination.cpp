#include "desktop/qt/termination.h"

#include <pthread.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): for sigset_t
#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

namespace vento::desktop::qt {
namespace {

bool IsIgnored(int number) {
    struct sigaction action {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

Termination::Termination() {
    sigset_t set{};
    sigemptyset(&set);
    for (const int each : {SIGTERM, SIGINT, SIGHUP}) {
        if (!IsIgnored(each)) sigaddset(&set, each);
    }
    descriptor_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    // Without the descriptor the signals keep their plain effect, which is to end the program.
    if (descriptor_ >= 0) pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

Termination::~Termination() {
    notifier_.reset();
    if (descriptor_ >= 0) ::close(descriptor_);
}

void Termination::Watch(Handler handler) {
    handler_ = std::move(handler);
    if (descriptor_ < 0 || notifier_) return;
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] {
        signalfd_siginfo info{};
        while (::read(descriptor_, &info, sizeof info) > 0)
            continue;
        const Handler current = handler_;  // which may put another in its place
        current();
    });
}

}  // namespace vento::desktop::qt
