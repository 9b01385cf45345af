#include "command.h"

namespace vento::fuzzing {
namespace {

using console::kCheckCommand;
using console::kConvertCommand;

/// Any bytes as a programme, opened in the panel.
std::array<std::optional<std::array<std::string, 3>>, kColumns> Open(const std::string& text) {
    test::FakeClock clock;
    test::FakeDesktop desktop;
    test::FakeFiles files;
    simulator::SimulatedHidHost host({}, clock);
    files.contents["p"] = text;
    FormWeb form({host, desktop, files, clock, platform::HidBackEnd::simulation});
    form.DropFile("p");
    const auto& problem = form.LatestLoadProblem();
    Require(form.Command6(0).Visible() == !problem && desktop.messages.size() == (problem ? 1 : 0),
            "the program button is there, or else a reason is told");
    if (problem) {
        RequireReadable(DescribeLoadProblem(*problem));
        Require(problem->line <= static_cast<std::size_t>(std::ranges::count(text, '\n')),
                "the line is there");
    }
    std::array<std::optional<std::array<std::string, 3>>, kColumns> columns;
    for (std::size_t c = 0; c < kColumns; ++c) {
        const auto& labels = form.ListView1.at(c).Items();
        const auto& a = form.ListView2.at(c).Items();
        const auto& b = form.ListView3.at(c).Items();
        Require(labels.size() <= 1 && a.size() <= 1 && b.size() <= 1, "a view has one item at the most");
        if (problem) continue;
        Require(labels.size() == a.size() && labels.size() == b.size(), "a column is whole");
        if (labels.empty()) continue;
        columns.at(c) = {labels[0], a[0], b[0]};
        if (const auto list = ParseCodeList(a[0]); list.bad)
            RequireReadable(DescribeBadPiece(*list.bad, "TV", 'A'));
    }
    return columns;
}

}  // namespace
}  // namespace vento::fuzzing

/// Any bytes as a programme, in the form that they are in: opened in the panel and by `check`, and made into
/// the other form and back by `convert`.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vento::fuzzing;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto columns = Open(text);
    RequireHarmless(RunCommand(kCheckCommand, text, {0, 65}).text);

    const auto first = RunCommand(kConvertCommand, text, {0, 65});
    if (first.status != 0) return 0;
    const auto second = RunCommand(kConvertCommand, first.text, {0});
    const auto third = RunCommand(kConvertCommand, second.text, {0});
    Require(second.fields["programme"] == first.fields["programme"],
            "the other form holds the same programme");
    Require(third.text == first.text, "and gives it back");
    RunCommand(vento::console::kDiffCommand, second.text, {0}, {Folder().Write("first", first.text), "-"});
    const bool isJson = first.text.find_first_not_of(' ') == std::string::npos || first.text.front() != '{';
    const auto opened = isJson ? Open(first.text) : columns;
    Require(opened == Open(isJson ? first.text : second.text), "the panel takes the same from both");
    return 0;
}
