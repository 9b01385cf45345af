#include "protocol/wait_for_remote.h"

#include <chrono>

#include "protocol/commands.h"

namespace vento {
namespace {

constexpr int kPassesAtFactorOne = 20000;
constexpr int kDivisorForFactorZero = 100;
constexpr int kGoodPollsInARow = 10;
constexpr std::chrono::minutes kSilenceLimit{3};

// Says when no report at all has come back for too long. The number of polls is what bounds the wait; this is
// for a transmitter that lets every poll run into the time limit of its read.
class SilenceWatch {
  public:
    SilenceWatch(platform::Clock& clock, const Link& link)
        : clock_(clock), link_(link), reportsRead_(link.reportsRead), lastHeard_(clock.Now()) {}

    bool TooLong() {
        const auto now = clock_.Now();
        if (link_.reportsRead != reportsRead_) {
            reportsRead_ = link_.reportsRead;
            lastHeard_ = now;
        }
        return now - lastHeard_ >= kSilenceLimit;
    }

  private:
    platform::Clock& clock_;
    const Link& link_;
    std::uint64_t reportsRead_;
    platform::Clock::Duration lastHeard_;
};

bool YieldAndLookForCancel(const OperationContext& context) {
    context.yield();
    return context.cancelControl.Tag() == kTagTrue;
}

SequenceResult Poll(const OperationContext& context, Link& link) {
    const int divisor = link.linkFactor == 0 ? kDivisorForFactorZero : link.linkFactor;
    SilenceWatch silence(context.clock, link);
    Reply reply{};
    for (int passes = kPassesAtFactorOne / divisor; passes >= 1; --passes) {
        int run = kGoodPollsInARow;
        for (; run >= 1; --run) {
            SendCommand(reply, command::kPresence, 1, link);
            if (!IsGoodReply(reply, command::kPresence)) break;
            if (YieldAndLookForCancel(context)) return {ResultCode::cancelled, "The operator cancelled."};
        }
        if (run == 0) return {};
        if (YieldAndLookForCancel(context)) return {ResultCode::cancelled, "The operator cancelled."};
        if (silence.TooLong()) {
            return {ResultCode::remoteNotDetected, "No report has come back for 3 minutes."};
        }
    }
    return {ResultCode::remoteNotDetected,
            "No remote answered 10 polls in a row; at the last poll " + DescribeLatest(link, reply) + "."};
}

}  // namespace

SequenceResult WaitForRemote(const OperationContext& context, Link& link) {
    context.cancelControl.SetEnabled(true);
    context.statusLabel.SetCaption(context.waitingText);
    context.yield();
    SequenceResult result = Poll(context, link);
    if (result.code == ResultCode::success) {
        context.statusLabel.SetCaption("");
        context.yield();
    }
    context.cancelControl.SetEnabled(false);
    context.cancelControl.SetTag(kTagFalse);
    return result;
}

}  // namespace vento
