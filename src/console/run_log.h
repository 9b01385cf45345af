#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "console/chosen_hid_host.h"
#include "console/commands.h"
#include "platform/files.h"

namespace vento::console {

/// The record of a day: a file to which each run adds one line of JSON, in one write, so that several
/// processes may share it. What is in it stays.
class RunLog {
  public:
    /// Opens the file that `options` name, or makes it; without a name the log does nothing. The programme
    /// file is read for its digest. Throws Failure if the log can't be written.
    RunLog(const Options& options, platform::Files& files);

    /// Adds the run whose outcome is in `answer`. Throws Failure.
    void Add(const Answer& answer, const ChosenHidHost& host);

  private:
    void Append(std::string_view text) const;

    const Options& options_;
    std::string digest_;
};

/// SHA-256 in hexadecimal.
[[nodiscard]] std::string Sha256(std::string_view bytes);

}  // namespace vento::console
