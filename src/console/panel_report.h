#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "console/commands.h"
#include "console/console_machine.h"
#include "panel/form_web.h"

namespace vento::console {

/// The fields of `program` and `read` as long as there is no panel.
[[nodiscard]] nlohmann::ordered_json BlankPanelFields(Language language);

/// The texts in the columns' views: null where a view holds no item.
[[nodiscard]] nlohmann::ordered_json ColumnFields(const FormWeb& form);

/// Puts the state of the panel into the fields of `answer`.
void ReportPanel(FormWeb& form, ConsoleMachine& machine, Answer& answer);

/// Lets `click` press a button of `form` that begins an operation, shows on standard error how it goes, hands
/// the operator's cancel on, and puts what came of it into `answer`.
void Operate(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& answer,
             const std::function<void()>& click);

/// Puts what became of each column, and the remote's version, into `answer`, after the rest of the panel; and
/// with `--strict` the status of what was lost.
void ReportProgramming(const FormWeb& form, const Console& console, Answer& answer);

/// Puts what a read has found into `answer`, and why there is nothing to show if it has found nothing.
void ReportReading(const FormWeb& form, Answer& answer);

/// A programme file did not load: says why, and puts it into `answer`.
void RefuseProgramme(const Console& console, const LoadProblem& problem, Language language, Answer& answer);

}  // namespace vento::console
