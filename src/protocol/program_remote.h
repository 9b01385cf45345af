#pragma once

#include "protocol/programme_plan.h"
#include "protocol/sequence.h"
#include "usb/gestione_hid.h"

namespace vento {

/// One whole programming run: decodes the code lists, waits for the remote, chooses list A or B by its
/// version, writes each selected column into its section, has each section verified, and activates the first
/// section.
///
/// The result tells which step failed. A section whose transfer fails is left out and the run goes on; a
/// section whose verification fails ends the run. What was written stays written. `outcome`, new when it is
/// handed over, is filled as the run goes. The bar runs from 0 to the number of bytes.
SequenceResult ProgramRemote(const OperationContext& context, Link& link, const Programme& programme,
                             ProgrammingOutcome& outcome);

}  // namespace vento
