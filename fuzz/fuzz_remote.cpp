#include <functional>
#include <map>

#include "fuzzing.h"
#include "panel/advice.h"

namespace vento::fuzzing {
namespace {

using Words = std::map<std::size_t, simulator::Word>;

/// The words of a memory, which are few, by their places.
Words WordsOf(const simulator::WordRuns& memory) {
    Words all;
    for (const auto& [offset, words] : memory) {
        for (std::size_t i = 0; i < words.size(); ++i)
            all[offset + i] = words[i];
    }
    return all;
}

/// A panel with a hostile transmitter, and an operator who presses anything at any time.
class Machine {
  public:
    explicit Machine(FuzzedDataProvider& data) : data_(data), scenario_(TakeScenario(data)) {
        files_.contents["p"] = TakeProgramme(data);
        PlanGesture();
        desktop_.onYield = [this](int) { Yield(); };
        form_.Form_Load("p");
    }

    void Run() {
        for (int i = data_.ConsumeIntegralInRange(1, 3); i > 0 && !form_.Ended(); --i)
            Operate(data_.ConsumeIntegralInRange<std::size_t>(0, 4));
        Require(form_.Ended() || WordsOf(simulated_.TheRemote()->Contents().memory) == memory_,
                "nothing else writes");
        form_.Form_Unload();
        Require(desktop_.ends == 1 && files_.deleted == std::vector<std::string>{"p"},
                "the program ends once, and so does its file");
    }

  private:
    struct Operation {
        void (FormWeb::*begin)();
        std::vector<int> codes;
        int waits;
    };

    void Operate(std::size_t index) {
        static const std::array<Operation, 5> kOperations{
            {{nullptr, {0, 2, 3, 5, 6, 9, 10, 11, 12, 13, 15, 18, 19}, 2},
             {&FormWeb::Command2_Click, {0, 2, 3, 5, 6, 9, 11, 12, 13, 15, 21}, 2},
             {&FormWeb::Verify, {0, 2, 3, 5, 6, 9, 10, 11, 12, 13, 15, 18, 21}, 1},
             {&FormWeb::Inspect, {0, 2, 3, 5, 6, 9, 11, 12, 13, 15, 21}, 1},
             {&FormWeb::AwaitRemoval, {2, 9, 13, 0}, 1}}};
        const Operation& operation = kOperations.at(index);
        for (const auto other :
             std::to_array<std::int16_t>({6, 8, 10}))  // frames for the transmitter itself, and nothing
            form_.Command6_Click(other);
        desktop_.messages.clear();
        const Programme programme = form_.GatherProgramme();
        begin_ = host_.cycles;
        cancelled_ = form_.Command6(3).Tag() == kTagTrue;  // the flag stays until a wait has seen it
        host_.reports = 0;
        yieldsLeft_ = index == 4 ? 1000 : 1U << 30U;
        index == 0 ? form_.Command6_Click(0) : (form_.*operation.begin)();
        Require(host_.open == 0, "every device that was opened is closed");
        if (form_.Ended()) return;

        Require(!form_.ProgressBar1.Visible(), "the bar is hidden");
        Require(form_.Command6(0).Enabled() && !form_.Command6(3).Enabled() && !form_.Operating(),
                "the program button is enabled and the cancel control is not");
        const auto& outcome = form_.LatestOutcome();
        if (!outcome) {
            Require(host_.Harmed(begin_), "a transmitter that stays is found");
            Require(desktop_.messages.size() == 1, "a missing transmitter is told of");
            return;
        }
        const int code = static_cast<int>(outcome->code);
        Require(std::ranges::find(operation.codes, code) != operation.codes.end(),
                "operation " + std::to_string(index) + " ends with " + std::to_string(code));
        Require(form_.Label1.Caption() == outcome->message, "the line tells the outcome");
        if (code != 0) RequireReadable(outcome->diagnostic);
        Require(code != 13 || cancelled_, "it is cancelled by the operator alone");
        constexpr std::array kOfProgramme{0, 5, 10, 15, 18};
        Require(
            host_.Harmed(begin_) || cancelled_ || std::ranges::find(kOfProgramme, code) != kOfProgramme.end(),
            "nothing fails on a good link but for the programme");
        CheckBound(operation.waits, index == 0 ? programme : Programme{});
        if (index != 0) return;
        CheckMemory(outcome->programming);
        CheckProgramming(*outcome, programme);
    }

    /// A wait is 20000 tries of ten polls at the most; a column is a few frames, and three for each block.
    void CheckBound(int waits, const Programme& programme) const {
        std::size_t most = 100 + static_cast<std::size_t>(waits) * 200'000;
        for (const auto* lists : {&programme.ListARecords, &programme.ListBRecords}) {
            for (const ProgrammeRecord& list : *lists)
                most += 4 * list.Text.size();
        }
        Require(host_.reports <= most, "an operation ends within its bound");
    }

    /// Nothing is written but where the lists go, and where a column is proved the list is there.
    void CheckMemory(const ProgrammingOutcome& programming) {
        const Words before = std::exchange(memory_, WordsOf(simulated_.TheRemote()->Contents().memory));
        for (const auto& [place, word] : before)
            Require(memory_.contains(place), "nothing is wiped out");
        for (const auto& [place, word] : memory_) {
            const auto was = before.find(place);
            if (was != before.end() && was->second == word) continue;
            const bool isInside =
                std::ranges::any_of(programming.columns, [&, at = place](const ColumnOutcome& column) {
                    return column.selected && column.offset && at >= *column.offset &&
                           at < *column.offset + column.bytes;
                });
            Require(isInside, "nothing outside a section is written");
        }
    }

    void CheckProgramming(const OperationOutcome& outcome, const Programme& programme) const {
        const auto& columns = outcome.programming.columns;
        // Behind such a fault a reply may be another than the remote's.
        const bool forged = host_.Harmed(begin_, simulator::fault::Status{});
        bool lost = false;
        for (std::size_t c = 0; c < kColumns; ++c) {
            lost = lost || columns[c].Lost();
            if (!columns[c].verified || columns[c].overwrittenBy || forged) continue;
            const auto& lists =
                outcome.programming.list == 'A' ? programme.ListARecords : programme.ListBRecords;
            const ParsedCodeList list = ParseCodeList(lists[c].Text);
            for (std::size_t i = 0; i < list.bytes.size(); ++i)
                Require(memory_.at(*columns[c].offset + i) == simulator::Word{list.bytes[i], 52},
                        "the list of a proved column is in the remote");
        }
        if (outcome.code != ResultCode::success) return;
        const std::string losses = DescribeLosses(outcome.programming).In(Language::english);
        const std::string box = kIncompleteProgramming.In(Language::english) + "\n";
        const auto& messages = desktop_.messages;  // cancelling may have told of a missing transmitter
        const bool told = !messages.empty() && messages.back().starts_with(box);
        Require(losses.empty() ? !told && !lost : told && messages.back() == box + losses,
                "what is lost is told of");
        Require(host_.Harmed(begin_) || outcome.programming.closed,
                "a run with a good transmitter is closed");
    }

    void PlanGesture() {
        gesture_ = data_.remaining_bytes() == 0 ? 255 : data_.ConsumeIntegral<std::uint8_t>();
        yieldsToGesture_ = data_.ConsumeIntegral<std::uint8_t>() * 4U;
    }

    void Yield() {
        (void)form_.Transmitter();
        (void)form_.ColumnInWork();
        if (--yieldsLeft_ == 0) {
            cancelled_ = true;
            form_.Cancel();
        }
        if (yieldsToGesture_-- > 0) return;
        const std::array<std::function<void()>, 8> gestures{
            [this] { form_.Cancel(); },          [this] { form_.Command6_Click(3); },
            [this] { form_.Command3_Click(); },  [this] { form_.Form_Unload(); },
            [this] { form_.Command6_Click(0); }, [this] { form_.Command2_Click(); },
            [this] { form_.Command4_Click(); },  [this] { form_.DropFile("q"); }};
        const std::uint8_t gesture = gesture_;
        PlanGesture();
        cancelled_ = cancelled_ || gesture < 2;
        if (gesture < gestures.size()) gestures.at(gesture)();
    }

    FuzzedDataProvider& data_;
    test::FakeClock clock_;
    test::FakeDesktop desktop_;
    test::FakeFiles files_;
    simulator::Scenario scenario_;
    simulator::SimulatedHidHost simulated_{scenario_, clock_};
    WatchedHidHost host_{simulated_, scenario_, clock_};
    FormWeb form_{{host_, desktop_, files_, clock_, platform::HidBackEnd::hidraw}};
    Words memory_;
    std::uint64_t begin_ = 0;  ///< cycles before the operation
    std::uint8_t gesture_ = 255;
    unsigned yieldsToGesture_ = 0;
    unsigned yieldsLeft_ = 0;
    bool cancelled_ = false;
};

}  // namespace
}  // namespace vento::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider provider(data, size);
    vento::fuzzing::Machine(provider).Run();
    return 0;
}
