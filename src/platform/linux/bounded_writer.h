#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>

#include "platform/hid_host.h"

namespace vento::platform {

/// Writes reports to hidraw nodes, and gives one up that the kernel keeps for too long.
///
/// A write to a USB device that does not take its report sleeps in the kernel for 5 seconds. Nothing
/// interrupts it, and until it is over whoever opens or closes any hidraw node sleeps too. So writes are made
/// by a thread, which one that is given up leaves behind in the kernel together with what is to be closed
/// afterwards.
class BoundedWriter {
  public:
    using SteadyClock = std::chrono::steady_clock;

    BoundedWriter();
    BoundedWriter(const BoundedWriter&) = delete;
    BoundedWriter& operator=(const BoundedWriter&) = delete;
    BoundedWriter(BoundedWriter&&) = delete;
    BoundedWriter& operator=(BoundedWriter&&) = delete;
    /// Does not wait for a write that was given up.
    ~BoundedWriter();

    /// As write(2), but fails with ETIMEDOUT when the kernel has not come back by the deadline. The kernel
    /// may still send the report afterwards.
    [[nodiscard]] ssize_t Write(int node, const Report& report, SteadyClock::time_point deadline);

    /// False if a write that was given up is still in the kernel when `deadline` is there. Only after true
    /// does an open not have to wait for it.
    [[nodiscard]] bool AwaitKernel(SteadyClock::time_point deadline);

    /// Closes a descriptor, once no write is in the kernel any more; does not wait for that.
    void Close(int descriptor);

  private:
    struct Shared;
    static void Serve(const std::shared_ptr<Shared>& shared);
    [[nodiscard]] bool Start();

    std::shared_ptr<Shared> shared_;  ///< with the thread, which may outlive this object
    bool started_ = false;
};

}  // namespace vento::platform
