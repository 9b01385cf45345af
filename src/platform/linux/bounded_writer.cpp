#include "platform/linux/bounded_writer.h"

#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vento::platform {

struct BoundedWriter::Shared {
    enum class State : std::uint8_t { idle, posted, inKernel, finished, givenUp };

    std::mutex mutex;
    std::condition_variable changed;
    State state = State::idle;
    bool ending = false;
    int node = -1;
    Report report{};
    ssize_t count = 0;
    int error = 0;
    std::vector<int> toClose;  ///< behind a write that was given up
};

BoundedWriter::BoundedWriter() : shared_(std::make_shared<Shared>()) {}

BoundedWriter::~BoundedWriter() {
    const std::lock_guard lock(shared_->mutex);
    shared_->ending = true;
    shared_->changed.notify_all();
}

/// The thread; `shared` is all that it knows.
void BoundedWriter::Serve(const std::shared_ptr<Shared>& shared) {
    using State = Shared::State;
    std::unique_lock lock(shared->mutex);
    for (;;) {
        shared->changed.wait(lock, [&] { return shared->ending || shared->state == State::posted; });
        if (shared->state != State::posted) return;
        shared->state = State::inKernel;
        const Report report = shared->report;
        const int node = shared->node;
        lock.unlock();
        const ssize_t count = ::write(node, report.data(), report.size());
        const int error = errno;
        lock.lock();
        shared->count = count;
        shared->error = error;
        if (shared->state == State::givenUp) {
            for (const int descriptor : std::exchange(shared->toClose, {}))
                ::close(descriptor);
            shared->state = State::idle;
        } else {
            shared->state = State::finished;
        }
        shared->changed.notify_all();
    }
}

bool BoundedWriter::Start() {
    if (started_) return true;
    // Signals are for the thread that has the program's handlers in mind.
    sigset_t all{};
    sigset_t before{};
    sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        std::thread([shared = shared_] { Serve(shared); }).detach();
        started_ = true;
    } catch (const std::system_error&) {
        errno = EAGAIN;
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started_;
}

ssize_t BoundedWriter::Write(int node, const Report& report, SteadyClock::time_point deadline) {
    using State = Shared::State;
    if (!Start()) return -1;
    Shared& shared = *shared_;
    std::unique_lock lock(shared.mutex);
    if (shared.state != State::idle) {
        errno = ETIMEDOUT;
        return -1;
    }
    shared.node = node;
    shared.report = report;
    shared.state = State::posted;
    shared.changed.notify_all();
    if (shared.changed.wait_until(lock, deadline, [&] { return shared.state == State::finished; })) {
        shared.state = State::idle;
        errno = shared.error;
        return shared.count;
    }
    // A write that the thread has not come to yet is taken back.
    shared.state = shared.state == State::posted ? State::idle : State::givenUp;
    errno = ETIMEDOUT;
    return -1;
}

bool BoundedWriter::AwaitKernel(SteadyClock::time_point deadline) {
    std::unique_lock lock(shared_->mutex);
    return shared_->changed.wait_until(lock, deadline, [&] { return shared_->state == Shared::State::idle; });
}

void BoundedWriter::Close(int descriptor) {
    {
        const std::lock_guard lock(shared_->mutex);
        if (shared_->state == Shared::State::givenUp) {
            shared_->toClose.push_back(descriptor);
            return;
        }
    }
    ::close(descriptor);
}

}  // namespace vento::platform
