#pragma once

#include "controls/controls.h"
#include "programme/programme_record.h"
#include "protocol/link.h"
#include "protocol/operation_context.h"
#include "protocol/sequence_result.h"

namespace vento {

/// One whole programming run: decodes the code lists, waits for the remote, chooses list A or B by its
/// version, writes each selected column into its section, has each section verified, and activates the first
/// section.
///
/// The result tells which step failed. A section whose transfer fails is left out and the run goes on; a
/// section whose verification fails ends the run. What was written stays written. `progressBar` runs from 0
/// to the number of bytes; whoever calls hides it.
[[nodiscard]] SequenceResult ProgramRemote(const OperationContext& context, ProgressBar& progressBar,
                                           Link& link, const Programme& programme);

}  // namespace vento
