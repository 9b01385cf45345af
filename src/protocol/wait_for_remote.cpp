#include "protocol/wait_for_remote.h"

#include <chrono>

#include "protocol/commands.h"

namespace vento {
namespace {

constexpr int kPassesAtFactorOne = 20000;
constexpr int kDivisorForFactorZero = 100;
constexpr int kGoodPollsInARow = 10;
constexpr std::chrono::minutes kSilenceLimit{3};
constexpr int kBadPollsOfAbsence = 200;  // a remote that is only moved a little answers again before
constexpr std::chrono::milliseconds kPauseWithoutTransmitter{100};

// Detects that no report at all has come back for too long. The wait is bounded by the number of polls; this
// is for a transmitter that lets every poll run into the time limit of its read.
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

SequenceResult Cancelled() {
    return {ResultCode::cancelled, Phrase{"L'operatore ha annullato.", "The operator cancelled."}};
}

SequenceResult Poll(const OperationContext& context, Link& link) {
    const int divisor = link.linkFactor == 0 ? kDivisorForFactorZero : link.linkFactor;
    SilenceWatch silence(context.clock, link);
    Reply reply{};
    for (int passes = kPassesAtFactorOne / divisor; passes >= 1; --passes) {
        int run = kGoodPollsInARow;
        for (; run >= 1; --run) {
            SendCommand(link, reply, command::kPresence, 1);
            if (!IsGoodReply(reply, command::kPresence)) break;
            if (YieldAndLookForCancel(context)) return Cancelled();
        }
        if (run == 0) return {};
        if (YieldAndLookForCancel(context)) return Cancelled();
        if (silence.TooLong()) {
            return {ResultCode::remoteNotDetected, Phrase{"Il trasmettitore non risponde da 3 minuti.",
                                                          "No report has come back for 3 minutes."}};
        }
    }
    return {ResultCode::remoteNotDetected,
            Fill({"Nessun telecomando ha risposto 10 volte di seguito; all'ultimo tentativo: {0}.",
                  "No remote answered 10 polls in a row; at the last poll {0}."},
                 {DescribeLatest(link, reply)})};
}

SequenceResult PollUntilGone(const OperationContext& context, Link& link) {
    Reply reply{};
    for (int gone = 0; gone < kBadPollsOfAbsence;) {
        SendCommand(link, reply, command::kPresence, 1);
        const bool nobodyAnswered = link.latest.reportsRead > 0 && reply[0] != 0;
        gone = nobodyAnswered ? gone + 1 : 0;
        if (!link.latest.transmitterFound) context.clock.Sleep(kPauseWithoutTransmitter);
        if (YieldAndLookForCancel(context)) return Cancelled();
    }
    return {};
}

// A wait of either kind, with what the operator sees of it.
SequenceResult Wait(const OperationContext& context, Link& link,
                    SequenceResult (*poll)(const OperationContext&, Link&)) {
    context.cancelControl.SetEnabled(true);
    context.statusLabel.SetCaption(context.waitingText);
    context.yield();
    SequenceResult result = poll(context, link);
    if (result.code == ResultCode::success) {
        context.statusLabel.SetCaption("");
        context.yield();
    }
    context.cancelControl.SetEnabled(false);
    context.cancelControl.SetTag(kTagFalse);
    return result;
}

}  // namespace

SequenceResult WaitForRemote(const OperationContext& context, Link& link) {
    return Wait(context, link, Poll);
}

SequenceResult WaitForRemoval(const OperationContext& context, Link& link) {
    return Wait(context, link, PollUntilGone);
}

}  // namespace vento
