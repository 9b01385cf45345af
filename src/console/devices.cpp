#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/notices.h"
#include "console/text_layout.h"
#include "panel/advice.h"
#include "platform/file_error.h"
#include "protocol/transmitter_kinds.h"
#include "text/language.h"
#include "usb/gestione_hid.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;
using platform::OpenOutcome;
using platform::ReportLengths;

constexpr ReportLengths kTransmitterLengths{platform::kReportPayload, platform::kReportPayload};

// A HID interface, and how the search for a transmitter fares with it.
struct Found {
    std::string name;
    std::optional<platform::HidIdentity> identity;
    OpenOutcome outcome = OpenOutcome::failed;
    int error = 0;                         // the system's, for what was not opened
    std::optional<ReportLengths> lengths;  // where they can be told
    bool taken = false;

    // A vendor of transmitters may have made other devices.
    [[nodiscard]] bool Recognised() const {
        return identity && IsTransmitter(*identity) && outcome != OpenOutcome::foreign;
    }
    [[nodiscard]] bool HasOtherLengths() const { return lengths && lengths != kTransmitterLengths; }
};

// The search of an operation, except that it goes on behind the transmitter that it finds.
std::vector<Found> Walk(platform::HidHost& host) {
    std::vector<Found> all;
    bool taken = false;
    host.Search([&](std::string_view path) {
        const platform::OpenAnswer answer = host.Open(path, IsTransmitter);
        Found& found = all.emplace_back(Found{.name = std::string(path),
                                              .identity = answer.identity,
                                              .outcome = answer.outcome,
                                              .error = answer.error,
                                              .lengths = {}});
        if (answer.outcome == OpenOutcome::opened) {
            const HidDevice device(host, answer.handle);
            found.lengths = host.Lengths(answer.handle);
            found.taken = !std::exchange(taken, true);
        }
        return true;
    });
    return all;
}

struct AccessName {
    std::string_view key;
    Phrase phrase;
};

AccessName AccessOf(OpenOutcome outcome) {
    switch (outcome) {
        case OpenOutcome::opened:
            return {"ok", {"accessibile", "accessible"}};
        case OpenOutcome::forbidden:
            return {"forbidden", {"vietato", "forbidden"}};
        case OpenOutcome::busy:
        case OpenOutcome::held:
            return {"busy", {"occupato", "busy"}};
        case OpenOutcome::noBandwidth:
        case OpenOutcome::failed:
            return {"failed", {"non si apre", "does not open"}};
        case OpenOutcome::foreign:
            break;
    }
    return {"unknown", {"altro dispositivo", "another device"}};  // left alone
}

ordered_json InterfaceFields(const Found& found) {
    ordered_json fields = {{"name", found.name},
                           {"vendorId", nullptr},
                           {"productId", nullptr},
                           {"recognised", found.Recognised()},
                           {"access", AccessOf(found.outcome).key},
                           {"taken", found.taken},
                           {"error", nullptr},
                           {"inputBytes", nullptr},
                           {"outputBytes", nullptr}};
    if (found.identity) {
        fields["vendorId"] = found.identity->vendorId;
        fields["productId"] = found.identity->productId;
    }
    if (found.error != 0) fields["error"] = found.error;
    if (found.lengths) {
        fields["inputBytes"] = found.lengths->input;
        fields["outputBytes"] = found.lengths->output;
    }
    return fields;
}

std::string Hex(std::uint16_t value) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (int shift = 12; shift >= 0; shift -= 4)
        hex += kDigits[static_cast<std::size_t>(value >> shift) & 15U];
    return hex;
}

// * /dev/hidraw0
//   04d8:0001  transmitter, accessible
std::string Describe(const Found& found, Language language) {
    std::string text = (found.taken ? "* " : "  ") + Printable(found.name) + "\n  ";
    if (found.identity) text += Hex(found.identity->vendorId) + ":" + Hex(found.identity->productId) + "  ";
    if (found.Recognised()) text += Phrase{"trasmettitore, ", "transmitter, "}.In(language);
    return text + AccessOf(found.outcome).phrase.In(language) + "\n";
}

std::string Legend(const std::vector<Found>& all, Language language) {
    Phrase legend{"Nessuna interfaccia sarebbe usata.\n", "No interface would be taken.\n"};
    if (all.empty()) legend = {"Non c'è alcuna interfaccia HID.\n", "There is no HID interface.\n"};
    if (std::ranges::any_of(all, &Found::taken)) legend = {"* sarebbe usata\n", "* would be taken\n"};
    return legend.In(language);
}

Sentence DescribeLengths(const ReportLengths& lengths) {
    return Fill(
        {"I suoi rapporti hanno {0} byte in ingresso e {1} in uscita; quelli di un trasmettitore ne "
         "hanno {2}. La trasmissione non riuscirà.",
         "Its reports have {0} bytes in and {1} bytes out; those of a transmitter have {2}. Transfers "
         "will fail."},
        {std::to_string(lengths.input), std::to_string(lengths.output),
         std::to_string(platform::kReportPayload)});
}

// What keeps a transmitter from being taken, or from working, is for the operator to mend.
void Explain(const Found& found, const Console& console, platform::HidBackEnd backEnd) {
    if (!found.Recognised()) return;
    Sentence advice = AdviseOn(found.outcome, backEnd);
    if (found.outcome == OpenOutcome::failed && found.error != 0) {
        advice += Fill(
            {" (Errore {0} del sistema: {1}.)", " (System error {0}: {1}.)"},
            {std::to_string(found.error), platform::SystemReason({found.error, std::system_category()})});
    }
    if (found.HasOtherLengths()) advice += DescribeLengths(*found.lengths);
    if (!advice.Empty()) console.notices.Error(found.name, advice.In(console.language));
}

void RunDevices(const Console& console, Answer& answer) {
    answer.fields = {{"interfaces", ordered_json::array()}};
    ConsoleMachine machine(console);
    const Language language = console.language;
    const std::vector<Found> all = Walk(machine.Hid());
    for (const Found& found : all) {
        answer.fields["interfaces"].push_back(InterfaceFields(found));
        answer.text += Describe(found, language);
        Explain(found, console, machine.BackEnd());
    }
    answer.text += Legend(all, language);
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kDevicesCommand{"devices",
                                             {"Elenca le interfacce HID e dice quale sarebbe usata",
                                              "List the HID interfaces and say which one would be taken"},
                                             {},
                                             {},
                                             {},
                                             RunDevices};

}  // namespace vento::console
