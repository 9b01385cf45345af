#pragma once

#include "protocol/programme_plan.h"
#include "protocol/sequence.h"
#include "usb/gestione_hid.h"

namespace vento {

/// Proves that a remote holds a programme, without writing to it: waits for the remote, asks for its version,
/// its sections and their flags, and has each selected column's section add itself up, as a programming run
/// does behind its last block. A section that the remote marks as free holds no programme, whatever is in its
/// memory. All columns are looked at; `verificationFailed` if one of them is not proved.
///
/// `outcome`, new when it is handed over, is filled as it goes: `verified` of a column says that it is
/// proved.
SequenceResult VerifyRemote(const OperationContext& context, Link& link, const Programme& programme,
                            ProgrammingOutcome& outcome);

}  // namespace vento
