#include "panel/run_operation.h"

#include <cstddef>
#include <filesystem>

#include "panel/advice.h"
#include "panel/message_table.h"
#include "protocol/wait_for_remote.h"

namespace vento {
namespace {

constexpr std::uint8_t kFirstCodeWithoutMessage = 100;
constexpr std::string_view kFormName = "FormWeb";

bool CanBeReadBack(const RemoteReading& reading) {
    return reading.version && reading.version->CanBeReadBack();
}

SequenceResult Read(const OperationContext& context, Link& link, RemoteReading& reading) {
    SequenceResult info = ReadRemoteInfo(context, link, reading);
    if (info.Failed() || !CanBeReadBack(reading)) return info;
    return ReadRemoteCodes(context, link, reading);
}

SequenceResult RunSequence(std::int16_t operation, const Programme& programme,
                           const OperationContext& context, Link& link, OperationOutcome& outcome) {
    switch (operation) {
        case kProgramOperation:
            return ProgramRemote(context, link, programme, outcome.programming);
        case kReadOperation:
            return Read(context, link, outcome.reading);
        case kVerifyOperation:
            return VerifyRemote(context, link, programme, outcome.programming);
        case kInspectOperation:
            return InspectRemote(context, link, outcome.reading);
        case kRemovalOperation:
            return WaitForRemoval(context, link);
        default:
            return {ResultCode::notStarted,
                    Fill({"L'operazione {0} non esiste.", "There is no operation {0}."},
                         {std::to_string(operation)})};
    }
}

// The rows of the table for success and for a verification that failed are those of programming.
std::string MessageOf(std::int16_t operation, ResultCode code, Language language) {
    if (operation == kVerifyOperation && code == ResultCode::success) {
        return Phrase{"Il telecomando contiene questo programma", "The remote holds this programme"}.In(
            language);
    }
    if (operation == kVerifyOperation && code == ResultCode::verificationFailed) {
        return Phrase{"Il telecomando non contiene questo programma",
                      "The remote does not hold this programme"}
            .In(language);
    }
    const bool onlyAsks = operation == kInspectOperation || operation == kRemovalOperation;
    if (onlyAsks && code == ResultCode::success) return {};
    return std::string(MessageFor(code, language));
}

SequenceResult Converse(std::int16_t operation, const Programme& programme, const TransmitterKind& kind,
                        const OperationContext& context, Link& link, OperationOutcome& outcome) {
    if (!SendLinkTiming(link, kind.timing)) {
        return {ResultCode::notStarted,
                Phrase{"Il trasmettitore è scomparso prima di ricevere la temporizzazione.",
                       "The transmitter was gone before it could take the link timing."}};
    }
    link.linkFactor = kind.timing.linkFactor;
    return RunSequence(operation, programme, context, link, outcome);
}

SequenceResult DescribeAbsence(const TransmitterSearch& search, platform::HidBackEnd backEnd) {
    if (search.obstacle) return {ResultCode::noTransmitter, AdviseOn(*search.obstacle, backEnd)};
    return {ResultCode::noTransmitter,
            Phrase{"Non è stato trovato alcun trasmettitore.", "No transmitter was found."}};
}

}  // namespace

void RunOperation(std::int16_t operation, const Programme& programme, const TransmitterKind& kind,
                  const OperationContext& context, Link& link, const OperationPanel& panel) {
    OperationOutcome& outcome = panel.outcome;
    // Technicians' settings: read each time, though no text or step depends on an entry today.
    static_cast<void>(ReadSettingsSection(panel.machine.files, "message"));
    const bool formIsActive = panel.machine.desktop.ActiveFormName() == kFormName;

    const TransmitterSearch search = LocateTransmitter(link);
    SequenceResult result = search.found ? Converse(operation, programme, kind, context, link, outcome)
                                         : DescribeAbsence(search, panel.machine.backEnd);
    outcome.code = result.code;
    outcome.diagnostic = std::move(result.diagnostic);
    if (operation == kProgramOperation && !result.Failed()) {
        outcome.diagnostic = DescribeLosses(outcome.programming);
    }
    const auto number = static_cast<std::uint8_t>(outcome.code);
    if (number < kFirstCodeWithoutMessage) {
        outcome.message = MessageOf(operation, outcome.code, panel.language);
        if (formIsActive) panel.text.SetText(std::to_string(number));
        const std::string& readText = outcome.reading.readText;
        if (outcome.code == ResultCode::success && !readText.empty()) {
            outcome.message.clear();
            if (CanBeReadBack(outcome.reading) && formIsActive) {
                outcome.message = readText;
                panel.text.SetText(readText);
            }
        }
    }
    context.progressBar.SetVisible(false);
}

std::vector<std::string> ReadSettingsSection(platform::Files& files, std::string_view section) {
    constexpr std::size_t kStep = 500;
    const std::filesystem::path file = files.ProgramFolder() / "Firmware" / "Quarzolab.ini";

    std::string buffer;
    std::size_t count = 0;
    do {  // a full buffer may have been cut off: ask again with a larger one
        buffer.assign(buffer.size() + kStep, ' ');
        count = files.ReadSection(section, buffer, file);
    } while (count >= buffer.size() - 2);

    std::vector<std::string> lines;
    std::string_view rest = std::string_view(buffer).substr(0, count);
    while (!rest.empty()) {
        const auto end = rest.find('\0');
        lines.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return lines;
}

}  // namespace vento
