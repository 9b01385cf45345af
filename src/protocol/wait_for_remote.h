#pragma once

#include "protocol/sequence.h"
#include "usb/gestione_hid.h"

namespace vento {

/// The first step of every conversation: asks the operator for the remote and polls until it has answered 10
/// times in a row.
///
/// `success`, with the status line cleared; `remoteNotDetected` after 20000 polls that were not good, divided
/// by the `LinkFactor`, or when no report at all has come back for 3 minutes; `cancelled` when the cancel
/// flag is seen, which is looked at after each poll. On every way out the cancel control is disabled and its
/// flag reset.
SequenceResult WaitForRemote(const OperationContext& context, Link& link);

/// Between two remotes: asks the operator to take this one away, and polls until the transmitter has said 200
/// times in a row that no remote answers. A report that is lost, or a transmitter that has gone, says nothing
/// of the remote, and the count begins anew. `cancelled` when the cancel flag is seen; otherwise it waits for
/// as long as it takes.
SequenceResult WaitForRemoval(const OperationContext& context, Link& link);

}  // namespace vento
