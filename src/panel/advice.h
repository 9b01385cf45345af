#pragma once

#include "platform/hid_host.h"
#include "platform/native.h"
#include "protocol/program_remote.h"
#include "text/language.h"

/// What the operator is told beside the status line, and what helps.
namespace vento {

/// What a person can do about a transmitter that is there but could not be opened. Who may open a device, and
/// how that is changed, differs between back ends. Empty for an outcome that needs no advice.
[[nodiscard]] Sentence AdviseOn(platform::OpenOutcome outcome, platform::HidBackEnd backEnd);

/// The operator is told this, with `DescribeLosses` below it, of a run that has success for its result and
/// has lost something all the same.
inline constexpr Phrase kIncompleteProgramming{"Il telecomando non è completo. Ripetere la programmazione.",
                                               "The remote is not complete. Program again."};

/// What such a run has lost: a line for each column, by name. Empty if nothing is lost.
[[nodiscard]] Sentence DescribeLosses(const ProgrammingOutcome& outcome);

/// What became of a column, without its name: "written and verified".
[[nodiscard]] Sentence DescribeColumnOutcome(const ColumnOutcome& column);

/// What a verification has found of a column, without its name: "is in the remote".
[[nodiscard]] Sentence DescribeVerification(const ColumnOutcome& column);

/// What became of one column, in a line: "TV: written and verified".
[[nodiscard]] Sentence DescribeColumn(const ProgrammingOutcome& outcome, std::size_t column);

}  // namespace vento
