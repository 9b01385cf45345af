#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "console/progress_line.h"
#include "platform/terminal.h"

namespace vento::console {

/// All that goes to standard error. What can't be written there is lost.
class Notices {
  public:
    /// `terminal` has to outlive this. `quiet` leaves errors alone.
    Notices(const platform::Terminal& terminal, bool quiet);

    /// An error, or what the operator can't do without: always said. `detail`, which may be empty, follows
    /// below.
    void Error(std::string_view text, std::string_view detail = {});

    /// What is good to know.
    void Note(std::string_view text);

    /// How far it is: drawn in place on a terminal; elsewhere nothing but a new caption is said.
    void ShowProgress(const Progress& progress);

    void ClearProgress();

  private:
    void Say(std::string_view prefix, std::string_view text);

    const platform::Terminal& terminal_;
    bool quiet_;
    bool redraws_;
    bool colour_;
    std::optional<ProgressLine> line_;  ///< nothing where nothing is drawn
    std::string latestCaption_;
};

}  // namespace vento::console
