#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/hid_host.h"

namespace vento::console {

/// Shows of another host, which outlives it, the one interface that the operator has chosen, or all of them
/// if there is no choice, and notes what was opened.
class ChosenHidHost final : public platform::ForwardingHidHost {
  public:
    struct Opened {
        std::string path;
        platform::HidIdentity identity;
    };

    ChosenHidHost(platform::HidHost& host, std::optional<std::string> chosen)
        : ForwardingHidHost(host), chosen_(std::move(chosen)) {}

    void Search(const std::function<bool(std::string_view path)>& visit) override;
    [[nodiscard]] platform::OpenAnswer Open(std::string_view path, platform::Wanted wanted) override;

    /// The device that was opened latest; nothing before the first.
    [[nodiscard]] const std::optional<Opened>& LatestOpened() const { return opened_; }

    /// An interface was chosen, and the latest search has not met it.
    [[nodiscard]] bool Misses() const { return chosen_.has_value() && !met_; }

  private:
    [[nodiscard]] bool IsChosen(std::string_view path) const;

    std::optional<std::string> chosen_;
    std::optional<Opened> opened_;
    bool met_ = false;
};

}  // namespace vento::console
