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

}  // namespace vento
