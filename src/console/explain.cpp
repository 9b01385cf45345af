#include <algorithm>
#include <array>
#include <string>

#include "console/commands.h"
#include "console/explained_trace.h"
#include "console/input.h"
#include "console/text_layout.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

constexpr std::array kExplainArguments{
    ArgumentEntry{{"TRACCIA", "TRACE"},
                  {"Il file che --trace ha scritto; - per lo standard input",
                   "The file that --trace wrote; - for standard input"}}};

constexpr std::array kExplainExamples{
    Example{"explain trace.jsonl",
            {"Racconta che cosa è passato sul collegamento, e dove è andato storto.",
             "Tells what crossed the link, and where it went wrong."}}};

std::string CyclesOf(const ExplainedStep& step) {
    const std::string first = std::to_string(step.firstCycle);
    return step.exchange.cycle == step.firstCycle ? first : first + "-" + std::to_string(step.exchange.cycle);
}

Sentence AnswerOf(const ExplainedStep& step) {
    if (step.exchange.kind != FrameKind::presence) return step.answer;
    return Fill({"{0} {0:interrogazione|interrogazioni}, {1} con risposta buona",
                 "{0} {0:poll|polls}, {1} answered well"},
                {std::to_string(step.count), std::to_string(step.good)});
}

// "  12  version (6): 1.0, build 4"
std::string Describe(const ExplainedStep& step, std::size_t cycleWidth, Language language) {
    const std::string cycles = CyclesOf(step);
    std::string text = step.failed ? "! " : "  ";
    text += std::string(cycleWidth - std::min(cycleWidth, cycles.size()), ' ') + cycles + "  ";
    text += TitleOf(step.exchange.kind).In(language);
    if (!step.arguments.Empty()) text += ", " + step.arguments.In(language);
    return text + ": " + Printable(AnswerOf(step).In(language)) + "\n";
}

ordered_json FieldsOf(const ExplainedStep& step, Language language) {
    ordered_json fields = {{"firstCycle", step.firstCycle},
                           {"lastCycle", step.exchange.cycle},
                           {"command", NameOf(step.exchange.kind)},
                           {"frame", nullptr},
                           {"reply", nullptr},
                           {"polls", nullptr},
                           {"goodPolls", nullptr},
                           {"failed", step.failed},
                           {"arguments", step.arguments.In(language)},
                           {"answer", AnswerOf(step).In(language)}};
    if (!step.exchange.frame.empty()) fields["frame"] = step.exchange.frame;
    if (step.exchange.reply) fields["reply"] = *step.exchange.reply;
    if (step.exchange.kind == FrameKind::presence) {
        fields["polls"] = step.count;
        fields["goodPolls"] = step.good;
    }
    return fields;
}

void RunExplain(const Console& console, Answer& answer) {
    answer.fields = {{"steps", ordered_json::array()}, {"firstDeviation", nullptr}, {"ending", ""}};
    const Language language = console.language;
    const std::string path = console.options.Argument(0);
    const ExplainedTrace explained = ExplainTrace(TraceOf(ReadInput(path, console.terminal), path));
    std::size_t width = 1;
    for (const ExplainedStep& step : explained.steps)
        width = std::max(width, CyclesOf(step).size());
    for (std::size_t i = 0; i < explained.steps.size(); ++i) {
        const ExplainedStep& step = explained.steps[i];
        answer.text += Describe(step, width, language);
        answer.fields["steps"].push_back(FieldsOf(step, language));
        if (explained.firstDeviation != i) continue;
        answer.text += std::string(width + 4, ' ') +
                       Fill({"^ La prima deviazione dal protocollo: {0}.",
                             "^ The first deviation from the protocol: {0}."},
                            {step.deviation})
                           .In(language) +
                       "\n";
        answer.fields["firstDeviation"] = {
            {"cycle", step.firstCycle}, {"step", i + 1}, {"reason", step.deviation.In(language)}};
    }
    answer.text += explained.ending.In(language) + "\n";
    answer.fields["ending"] = explained.ending.In(language);
}

}  // namespace

constinit const CommandEntry kExplainCommand{
    "explain",         {"Racconta a parole una traccia", "Tell a trace in words"},
    kExplainArguments, {},
    kExplainExamples,  RunExplain};

}  // namespace vento::console
