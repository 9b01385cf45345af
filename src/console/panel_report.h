#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "console/commands.h"
#include "console/console_machine.h"
#include "panel/form_web.h"

namespace vento::console {

/// The fields of `program` and `read` as long as there is no panel.
[[nodiscard]] nlohmann::ordered_json BlankPanelFields(Language language);

/// The fields of `program` and `verify` as long as there is no panel.
[[nodiscard]] nlohmann::ordered_json BlankProgrammingFields(Language language);

/// The texts in the columns' views: null where a view holds no item.
[[nodiscard]] nlohmann::ordered_json ColumnFields(const FormWeb& form);

/// Puts the state of the panel into the fields of `answer`.
void ReportPanel(FormWeb& form, ConsoleMachine& machine, Answer& answer);

/// Lets `click` press a button of `form` that begins an operation, shows on standard error how it goes, hands
/// the operator's cancel on, and puts what came of it into `answer`. The seconds of several operations add
/// up.
void Operate(const Console& console, ConsoleMachine& machine, FormWeb& form, Answer& answer,
             const std::function<void()>& click);

/// Puts the remote's version, and under `key` of each column what became of it, into the fields of `answer`,
/// after the rest of the panel.
void ReportColumns(const FormWeb& form, const ProgrammingOutcome& outcome, std::string_view key,
                   Answer& answer);

/// Adds a line for each column to the text of `answer`.
void TellColumns(const FormWeb& form, const ProgrammingOutcome& outcome,
                 Sentence (*describe)(const ColumnOutcome&), Answer& answer);

/// Puts what a read has found into `answer`, and why there is nothing to show if it has found nothing.
void ReportReading(const FormWeb& form, Answer& answer);

/// Loads the programme file that is the command's argument; if it does not load false, and `answer` says why.
[[nodiscard]] bool LoadProgramme(const Console& console, FormWeb& form, Answer& answer);

/// A programme file did not load: says why, and puts it into `answer`.
void RefuseProgramme(const Console& console, const LoadProblem& problem, Language language, Answer& answer);

}  // namespace vento::console
