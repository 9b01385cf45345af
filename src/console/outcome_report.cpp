#include "console/outcome_report.h"

#include <string_view>

#include "panel/advice.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

template <class Value>
ordered_json OrNull(const std::optional<Value>& value) {
    return value ? ordered_json(*value) : ordered_json(nullptr);
}

// "TV (list B, 328 bytes from word 256): written and verified"
Sentence DescribeLine(const ProgrammingOutcome& outcome, std::size_t column, const Sentence& fate) {
    const ColumnOutcome& each = outcome.columns.at(column);
    if (!each.HasPlace() || !outcome.list) return Labelled(kSections.at(column).name, fate);
    return Fill({"{0} (lista {1}, {2} byte dalla parola {3}): {4}",
                 "{0} (list {1}, {2} {2:byte|bytes} from word {3}): {4}"},
                {kSections.at(column).name, std::string(1, *outcome.list), std::to_string(each.bytes),
                 std::to_string(*each.offset), fate});
}

}  // namespace

ordered_json VersionFields(const std::optional<RemoteVersion>& version) {
    if (!version) return nullptr;
    return {
        {"major", version->VersionMajor}, {"minor", version->VersionMinor}, {"build", version->VersionBuild}};
}

ordered_json OutcomeFields(const ProgrammingOutcome& outcome, std::size_t column, Language language) {
    const ColumnOutcome& each = outcome.columns.at(column);
    ordered_json fields = {
        {"selected", each.selected},     {"list", nullptr},         {"bytes", each.bytes},
        {"offset", OrNull(each.offset)}, {"written", each.written}, {"verified", each.verified},
        {"overwrittenBy", nullptr},      {"lost", each.Lost()},     {"reason", nullptr}};
    if (each.selected && outcome.list) fields["list"] = std::string(1, *outcome.list);
    if (each.overwrittenBy) fields["overwrittenBy"] = kSections.at(*each.overwrittenBy).name;
    if (!each.problem.Empty()) fields["reason"] = each.problem.In(language);
    return fields;
}

Sentence DescribeColumns(const ProgrammingOutcome& outcome, const std::string& file,
                         Sentence (*describe)(const ColumnOutcome&)) {
    if (!outcome.version) return {};
    Sentence text = Fill({"{0}, telecomando di versione {1}", "{0}, remote of version {1}"},
                         {file, VersionText(*outcome.version)});
    for (std::size_t c = 0; c < kColumns; ++c) {
        text += "\n";
        text += DescribeLine(outcome, c, describe(outcome.columns.at(c)));
    }
    return text;
}

ordered_json SectionFields(const RemoteReading& reading) {
    ordered_json sections = ordered_json::array();
    for (std::size_t i = 0; i < reading.offsets.count; ++i) {
        ordered_json free = nullptr;
        if (reading.flags) free = (*reading.flags & kSections.at(i).SectionMask) != 0;
        sections.push_back({{"column", kSections.at(i).name},
                            {"offset", reading.offsets.words.at(i)},
                            {"free", free},
                            {"name", OrNull(reading.names.at(i))}});
    }
    return sections;
}

Sentence ExplainEmptyReading(const RemoteReading& reading) {
    if (!reading.readText.empty()) return {};
    if (!reading.version) {
        return Phrase{
            "Il telecomando non ha confermato la fine della comunicazione, e non si sa che cosa contiene. "
            "Tenerlo fermo davanti al trasmettitore e rileggerlo.",
            "The remote did not acknowledge the end of the conversation, and what it holds is not known. "
            "Keep it still in front of the transmitter and read it again."};
    }
    if (!reading.version->CanBeReadBack()) {
        return Fill(
            {"Questo telecomando, di versione {0}, non si può rileggere: può solo essere programmato.",
             "This remote, of version {0}, can't be read back: it can only be programmed."},
            {VersionText(*reading.version)});
    }
    return Phrase{
        "Nessuna sezione del telecomando si è lasciata leggere. Tenerlo fermo davanti al trasmettitore e "
        "rileggerlo.",
        "No section of the remote could be read. Keep it still in front of the transmitter and read it "
        "again."};
}

}  // namespace vento::console
