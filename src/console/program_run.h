#pragma once

#include <optional>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/run_log.h"
#include "panel/form_web.h"

namespace vento::console {

/// What `program` answers as long as nothing has run.
[[nodiscard]] nlohmann::ordered_json BlankRunFields(const Console& console);

/// Programmes one remote, proves it if that is asked for, and puts what came of it into `answer`. What the
/// programming came to; nothing if there was no transmitter. An end that is demanded in between goes into
/// `log`.
std::optional<OperationOutcome> ProgramOne(const Console& console, ConsoleMachine& machine, FormWeb& form,
                                           RunLog& log, Answer& answer);

/// Programmes one remote after the other: each has to be taken away before the next is waited for. Ends
/// behind as many as the options say, by Ctrl-C, or where no further remote could be programmed.
void ProgramSeries(const Console& console, ConsoleMachine& machine, FormWeb& form, RunLog& log,
                   Answer& answer);

}  // namespace vento::console
