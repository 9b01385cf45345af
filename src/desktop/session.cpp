#include "desktop/session.h"

#include "panel/form_web.h"
#include "panel/message_table.h"
#include "platform/native.h"
#include "simulator/image.h"
#include "simulator/scenario.h"
#include "simulator/simulated_hid_host.h"

namespace vento::desktop {
namespace {

constexpr Phrase kSimulation{" (simulazione)", " (simulation)"};
constexpr Phrase kImageNotSaved{"Il contenuto del telecomando simulato non è stato salvato",
                                "The contents of the simulated remote were not saved"};
constexpr Phrase kScenarioUnusable{"Lo scenario della simulazione non è utilizzabile",
                                   "The scenario of the simulation can't be used"};

}  // namespace

Session::Session(std::string_view simulate)
    : files_(platform::MakeNativeFiles()), clock_(platform::MakeNativeClock()) {
    if (simulate.empty() || simulate == "0") {
        hid_ = platform::MakeNativeHidHost();
        return;
    }
    const simulator::Scenario scenario =
        simulate == "1" ? simulator::Scenario{} : simulator::LoadScenario(std::string(simulate));
    auto simulated = std::make_unique<simulator::SimulatedHidHost>(scenario, *clock_);
    simulated_ = simulated.get();
    hid_ = std::move(simulated);
}

Session::~Session() = default;

Machine Session::MachineWith(platform::Desktop& desktop) {
    return {*hid_, desktop, *files_, *clock_,
            simulated_ != nullptr ? platform::HidBackEnd::simulation : platform::NativeHidBackEnd()};
}

std::string Session::Title(Language language) const {
    const std::string title(FormWeb::kTitle);
    return simulated_ == nullptr ? title : title + kSimulation.In(language);
}

std::optional<Notice> Session::Finish(Language language) {
    if (simulated_ == nullptr) return std::nullopt;
    try {
        simulated_->SaveImage();
        return std::nullopt;
    } catch (const simulator::ImageError& error) {
        return Notice{kImageNotSaved.In(language), error.Reason().In(language)};
    }
}

Notice StartNotice(std::string_view simulate, const std::exception& error, Language language) {
    return {kScenarioUnusable.In(language),
            std::string(simulate).append(": ").append(ReasonOf(error).In(language))};
}

Notice FailureNotice(const std::exception& error, Language language) {
    return {kUnforeseen.In(language), ReasonOf(error).In(language)};
}

Language DesktopLanguage() {
    return LanguageFromAbbreviation(platform::NativeLanguageAbbreviation().value_or(""));
}

}  // namespace vento::desktop
