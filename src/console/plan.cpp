#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "console/commands.h"
#include "console/console_machine.h"
#include "console/failure.h"
#include "console/notices.h"
#include "console/outcome_report.h"
#include "console/panel_report.h"
#include "panel/form_web.h"
#include "panel/message_table.h"
#include "protocol/code_transfer.h"
#include "protocol/programme_plan.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kFramesOfBlock = 3;    // opened, header, data
constexpr std::size_t kFramesOfSection = 4;  // announced by two, verified by two
constexpr std::size_t kFramesOfEnd = 5;      // closing flags by two, activation by three

// The numbers of "3.0.4", each from 0 to what `limits` says; nothing if it is not so many of them.
std::optional<std::vector<std::uint16_t>> ParseNumbers(std::string_view text, char separator,
                                                       std::size_t most) {
    std::vector<std::uint16_t> numbers;
    for (;;) {
        const auto end = text.find(separator);
        const std::string_view piece = text.substr(0, end);
        std::uint16_t number = 0;
        const auto [stop, error] = std::from_chars(piece.data(), piece.data() + piece.size(), number);
        if (error != std::errc{} || stop != piece.data() + piece.size() || numbers.size() == most)
            return std::nullopt;
        numbers.push_back(number);
        if (end == std::string_view::npos) return numbers;
        text.remove_prefix(end + 1);
    }
}

bool TakeVersion(Options& options, std::string_view value) {
    const auto numbers = ParseNumbers(value, '.', 3);
    if (!numbers || numbers->size() != 3 || (*numbers)[0] > 3 || (*numbers)[1] > 3 || (*numbers)[2] > 15)
        return false;
    options.remoteVersion =
        RemoteVersion{static_cast<std::uint8_t>((*numbers)[0]), static_cast<std::uint8_t>((*numbers)[1]),
                      static_cast<std::uint8_t>((*numbers)[2])};
    return true;
}

bool TakeSections(Options& options, std::string_view value) {
    const auto numbers = ParseNumbers(value, ',', kSections.size());
    if (!numbers) return false;
    options.sections.emplace();
    std::ranges::copy(*numbers, options.sections->words.begin());
    options.sections->count = numbers->size();
    return true;
}

constexpr std::array kPlanArguments{
    ArgumentEntry{{"FILE", "FILE"}, {"Il file di programmazione", "The programme file"}}};

constexpr std::array kPlanOptions{
    OptionEntry{"remote-version",
                '\0',
                OptionEntry::Value::required,
                {"VERSIONE", "VERSION"},
                {"Per un telecomando di questa versione, come 3.0.4, senza interrogarne uno",
                 "For a remote of this version, such as 3.0.4, without asking one"},
                TakeVersion},
    OptionEntry{"sections",
                '\0',
                OptionEntry::Value::required,
                {"POSIZIONI", "OFFSETS"},
                {"Le parole da cui cominciano le sue sezioni; se mancano, 256,4352,8448",
                 "The words at which its sections begin; without, 256,4352,8448"},
                TakeSections},
    kTransmitterOption};

constexpr std::array kPlanExamples{
    Example{"plan VENTO-casa.qlb --remote-version 3.0.4",
            {"Dice quale lista andrebbe dove, senza interrogare un telecomando.",
             "Says which list would go where, without asking a remote."}}};

// What a run would do with one column.
struct PlannedColumn {
    std::size_t blocks = 0;
    std::size_t frames = 0;
    std::size_t room = 0;  // words from the section's offset to the next section, or the memory's end
};

std::size_t RoomAt(std::uint16_t offset, const SectionOffsets& offsets) {
    std::size_t end = kWordsOfMemory;
    for (const std::uint16_t other : offsets.All()) {
        if (other > offset) end = std::min<std::size_t>(end, other);
    }
    return end - offset;
}

PlannedColumn PlanOf(const ColumnOutcome& column, const SectionOffsets& offsets) {
    PlannedColumn plan;
    if (column.offset) plan.room = RoomAt(*column.offset, offsets);
    if (!column.HasPlace()) return plan;
    plan.blocks = (column.bytes + kBlockSize - 1) / kBlockSize;
    plan.frames = kFramesOfSection + kFramesOfBlock * plan.blocks;
    return plan;
}

struct PlannedRun {
    ProgrammingOutcome outcome;
    SectionOffsets offsets;
    std::array<PlannedColumn, kColumns> columns;
    std::size_t bytes = 0;
    std::size_t frames = kFramesOfEnd;
};

SequenceResult MakePlan(const Programme& programme, const RemoteVersion& version, PlannedRun& run) {
    ProgrammePlan plan(programme, run.outcome);
    if (SequenceResult lists = plan.CheckLists(); lists.Failed()) return lists;
    if (SequenceResult chosen = plan.ChooseLists(version); chosen.Failed()) return chosen;
    SequenceResult placed = plan.PlaceColumns(run.offsets);
    for (std::size_t c = 0; c < kColumns; ++c) {
        const ColumnOutcome& column = run.outcome.columns.at(c);
        run.columns.at(c) = PlanOf(column, run.offsets);
        run.frames += run.columns.at(c).frames;
        if (!column.HasPlace()) continue;
        run.bytes += column.bytes;
        if (!placed.Failed()) NoteOverwritten(run.outcome.columns, c, column.bytes);
    }
    return placed;
}

ordered_json ColumnFieldsOf(const PlannedRun& run, std::size_t c, Language language) {
    ordered_json fields = OutcomeFields(run.outcome, c, language);
    for (const std::string_view key : {"written", "verified", "lost"})
        fields.erase(std::string(key));
    fields["blocks"] = run.columns.at(c).blocks;
    fields["frames"] = run.columns.at(c).frames;
    fields["room"] =
        run.outcome.columns.at(c).offset ? ordered_json(run.columns.at(c).room) : ordered_json(nullptr);
    return fields;
}

// "TV: list B, 328 bytes in 11 blocks and 37 frames, from word 256, with room for 4096"
Sentence DescribePlanned(const PlannedRun& run, std::size_t c) {
    const ColumnOutcome& column = run.outcome.columns.at(c);
    const PlannedColumn& plan = run.columns.at(c);
    const Sentence name = std::string(kSections.at(c).name);
    Sentence text;
    if (!column.selected) {
        text = Fill({"{0}: non selezionata", "{0}: not selected"}, {name});
    } else if (!column.offset) {
        text = Labelled(name, column.problem);
    } else {
        text = Fill({"{0}: lista {1}, {2} byte in {3} {3:blocco|blocchi} e {4} frame, dalla parola {5}, che "
                     "ha posto per {6}",
                     "{0}: list {1}, {2} {2:byte|bytes} in {3} {3:block|blocks} and {4} {4:frame|frames}, "
                     "from word {5}, which has room for {6}"},
                    {name, std::string(1, run.outcome.list.value_or('?')), std::to_string(column.bytes),
                     std::to_string(plan.blocks), std::to_string(plan.frames), std::to_string(*column.offset),
                     std::to_string(plan.room)});
    }
    if (column.overwrittenBy) {
        text += Fill({"; la lista di {0} la sovrascriverebbe", "; the list of {0} would overwrite it"},
                     {kSections.at(*column.overwrittenBy).name});
    }
    return text;
}

void Report(const Console& console, const PlannedRun& run, const SequenceResult& result, Answer& answer) {
    const Language language = console.language;
    answer.status = static_cast<int>(result.code);
    answer.fields["result"] = answer.status;
    answer.fields["version"] = VersionFields(run.outcome.version);
    for (std::size_t c = 0; c < kColumns; ++c)
        answer.fields["columns"][c]["plan"] = ColumnFieldsOf(run, c, language);
    if (result.Failed()) {
        answer.Diagnose(result.diagnostic.In(Language::english));
        console.notices.Error(std::string(MessageFor(result.code, language)), result.diagnostic);
        return;
    }
    answer.fields["bytes"] = run.bytes;
    answer.fields["frames"] = run.frames;
    answer.text = Fill({"{0}, telecomando di versione {1}: {2} byte, {3} frame\n",
                        "{0}, remote of version {1}: {2} {2:byte|bytes}, {3} {3:frame|frames}\n"},
                       {console.options.Argument(0), VersionText(run.outcome.version.value()),
                        std::to_string(run.bytes), std::to_string(run.frames)})
                      .In(language);
    for (std::size_t c = 0; c < kColumns; ++c)
        answer.text += DescribePlanned(run, c).In(language) + "\n";
}

// The remote that is asked, or the one that the options tell of; nothing if none could be asked.
std::optional<RemoteReading> RemoteOf(const Console& console, ConsoleMachine& machine, FormWeb& form,
                                      Answer& answer) {
    if (console.options.remoteVersion) {
        RemoteReading given;
        given.version = console.options.remoteVersion;
        given.offsets = console.options.sections.value_or(SectionOffsets{{256, 4352, 8448}, 3});
        return given;
    }
    Operate(console, machine, form, answer, [&] { form.Inspect(); });
    const auto& outcome = form.LatestOutcome();
    if (!outcome || outcome->code != ResultCode::success) return std::nullopt;
    return outcome->reading;
}

void RunPlan(const Console& console, Answer& answer) {
    if (console.options.sections && !console.options.remoteVersion) {
        throw Failure(kWrongUsage, Phrase{"--sections vuole anche --remote-version",
                                          "--sections wants --remote-version too"});
    }
    answer.fields = {{"result", nullptr}, {"label2", ""},       {"version", nullptr}, {"bytes", nullptr},
                     {"frames", nullptr}, {"columns", nullptr}, {"cycles", 0},        {"seconds", 0}};
    ConsoleMachine machine(console);
    FormWeb form(machine.ForPanel());
    form.Form_Load("");
    const bool loaded = LoadProgramme(console, form, answer);
    answer.fields["label2"] = form.Label2.Caption();
    answer.fields["columns"] = ColumnFields(form);
    for (ordered_json& column : answer.fields["columns"])
        column["plan"] = nullptr;
    if (loaded) {
        if (const auto remote = RemoteOf(console, machine, form, answer)) {
            PlannedRun run;
            run.offsets = remote->offsets;
            Report(console, run, MakePlan(form.GatherProgramme(), remote->version.value(), run), answer);
        }
    }
    answer.fields["cycles"] = machine.Hid().Cycles();
    machine.Finish();
}

}  // namespace

constinit const CommandEntry kPlanCommand{"plan",
                                          {"Dice che cosa si scriverebbe in un telecomando, senza scrivere",
                                           "Say what would be written to a remote, without writing"},
                                          kPlanArguments,
                                          kPlanOptions,
                                          kPlanExamples,
                                          RunPlan};

}  // namespace vento::console
