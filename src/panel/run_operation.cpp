#include "panel/run_operation.h"

#include <optional>
#include <string_view>
#include <vector>

#include "panel/message_table.h"
#include "panel/settings.h"
#include "protocol/program_remote.h"
#include "protocol/read_back.h"
#include "usb/gestione_hid.h"

namespace vento {
namespace {

constexpr std::uint8_t kFirstCodeWithoutMessage = 100;
constexpr std::string_view kFormName = "FormWeb";

// What a sequence leaves besides its result.
struct Reading {
    RemoteVersion version;
    std::string readText;
};

SequenceResult RunSequence(std::int16_t operation, const Programme& programme,
                           const OperationControls& controls, const OperationContext& context, Link& link,
                           Reading& reading) {
    if (operation == kProgramOperation) return ProgramRemote(context, controls.progressBar, link, programme);
    if (operation != kReadOperation) {
        return {ResultCode::notStarted, "There is no operation " + std::to_string(operation) + "."};
    }
    std::uint8_t flags = 0;
    SequenceResult info = ReadRemoteInfo(reading.version, flags, context, link);
    if (info.code != ResultCode::success || reading.version.VersionBuild < 1) return info;
    return ReadRemoteCodes(reading.readText, context, link);
}

SequenceResult Converse(std::int16_t operation, const Programme& programme, const OperationControls& controls,
                        const LinkTimingSet& timing, std::int32_t& vendorId, std::int32_t& productId,
                        const Machine& machine, Language language, const std::function<void()>& yield,
                        Reading& reading) {
    const TransmitterSearch search = LocateTransmitter(machine.hid, vendorId, productId);
    if (!search.found) {
        const std::string obstacle = DescribeObstacle(machine.hid, search.obstacle, Language::english);
        return {ResultCode::noTransmitter, obstacle.empty() ? "No transmitter was found." : obstacle};
    }
    if (!SendLinkTiming(machine.hid, timing, vendorId, productId)) {
        return {ResultCode::notStarted, "The transmitter was gone before it could take the link timing."};
    }
    const OperationContext context{controls.statusLabel, controls.cancelControl,
                                   TextOf(PanelText::waitingForRemote, language), machine.clock, yield};
    Link link{machine.hid, timing.linkFactor, vendorId, productId};
    SequenceResult result = RunSequence(operation, programme, controls, context, link, reading);
    vendorId = link.vendorId;
    productId = link.productId;
    return result;
}

}  // namespace

OperationOutcome RunOperation(std::int16_t operation, const Programme& programme,
                              const OperationControls& controls, const LinkTimingSet& timing,
                              std::int32_t& vendorId, std::int32_t& productId, const Machine& machine,
                              Language language, const std::function<void()>& yield) {
    // Technicians' settings: read each time, though no text or step depends on an entry today.
    static_cast<void>(ReadSettingsSection(machine.files, "message"));
    const bool formIsActive = machine.desktop.ActiveFormName() == kFormName;

    Reading reading;
    SequenceResult result = Converse(operation, programme, controls, timing, vendorId, productId, machine,
                                     language, yield, reading);
    OperationOutcome outcome{result.code, {}, std::move(result.diagnostic)};
    const auto number = static_cast<std::uint8_t>(result.code);
    if (number < kFirstCodeWithoutMessage) {
        outcome.message = TextOf(result.code, language);
        if (formIsActive) controls.outcome.SetText(std::to_string(number));
        if (result.code == ResultCode::success && !reading.readText.empty()) {
            outcome.message.clear();
            if (reading.version.VersionBuild >= 1 && formIsActive) {
                outcome.message = reading.readText;
                controls.outcome.SetText(reading.readText);
            }
        }
    }
    controls.progressBar.SetVisible(false);
    return outcome;
}

std::string DescribeObstacle(const platform::HidHost& host, std::optional<platform::OpenOutcome> obstacle,
                             Language language) {
    return obstacle ? host.Advice(*obstacle, language) : std::string{};
}

}  // namespace vento
