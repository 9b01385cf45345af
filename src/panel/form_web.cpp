#include "panel/form_web.h"

#include <stdexcept>
#include <utility>

#include "panel/advice.h"
#include "panel/message_table.h"
#include "programme/fields.h"

namespace vento {
namespace {

constexpr std::int16_t kProgramIndex = 0;
constexpr std::int16_t kSendRIndex = 6;
constexpr std::int16_t kSendQIndex = 8;
constexpr std::int16_t kSecondEntryIndex = 10;

constexpr std::string_view kDialogTitle = "Seleziona il file da aprire";
constexpr std::string_view kDialogFilter = "File VENTO (*.qlb)|VENTO*.qlb|";

// Sets a value for as long as this lives.
template <class Value>
class During {
  public:
    During(Value& place, Value value) : place_(place), before_(std::exchange(place, value)) {}
    During(const During&) = delete;
    During& operator=(const During&) = delete;
    During(During&&) = delete;
    During& operator=(During&&) = delete;
    ~During() { place_ = before_; }

  private:
    Value& place_;
    Value before_;
};

// Leaves whatever runs when a handler, in a turn of the event loop, has ended the program.
struct ProgramEnded {};

// The record of a view: only its first item counts, and only if there is more to it than blanks.
ProgrammeRecord RecordOf(const ListView& view) {
    const std::string_view text = TrimBlanks(view.FirstItem());
    return {std::string(text), !text.empty()};
}

constexpr Phrase kWhyAwake{"Un telecomando viene programmato o letto.",
                           "A remote is being programmed or read."};
constexpr Phrase kMissingTransmitter{"Programmatore non collegato", "Transmitter not connected"};

}  // namespace

Button& FormWeb::Command6(int index) {
    switch (index) {
        case kProgramIndex:
            return command6_[0];
        case kCancelHolder:
            return command6_[1];
        case kSecondEntryIndex:
            return command6_[2];
        default:
            throw std::out_of_range("Command6 has no member " + std::to_string(index));
    }
}

vento::Language FormWeb::PanelLanguage() const {
    return LanguageFromAbbreviation(Language);
}

void FormWeb::Form_Load(std::string_view commandLine, CommandLineKind kind) {
    Label2.SetCaption(commandLine);
    if (!commandLine.empty()) {
        std::string path(commandLine);
        if (kind == CommandLineKind::typed) std::erase(path, '"');
        Label2.SetCaption(path);
        Aprifilevento(path);
    }
    Language = machine_.desktop.LanguageAbbreviation().value_or("ENG");
    Command6(kProgramIndex).SetCaption(PanelTextFor(PanelText::programCaption, PanelLanguage()));
    Command4.SetCaption(PanelTextFor(PanelText::openCaption, PanelLanguage()));
    Command2.SetCaption(PanelTextFor(PanelText::readCaption, PanelLanguage()));
    Command3.SetCaption(PanelTextFor(PanelText::closeCaption, PanelLanguage()));
    Label1.SetCaption("");
    ProgressBar1.SetVisible(false);
    CentreForm(Place, machine_.desktop.ScreenSize());
}

void FormWeb::Form_Unload() {
    End();
}

void FormWeb::Command3_Click() {
    End();
}

void FormWeb::End() {
    if (ended_) return;
    machine_.files.Delete(Label2.Caption());
    ended_ = true;
    machine_.desktop.EndProgram();
}

// A handler that would start something: not while another one is at it. Whatever ends the program at one of
// its yields is caught here.
template <class Body>
void FormWeb::Begin(Body body) {
    if (busy_ || ended_) return;
    const During busy(busy_, true);
    try {
        body();
    } catch (const ProgramEnded&) {
        return;
    }
}

void FormWeb::BeginOperation(std::int16_t operation, const Programme& programme) {
    Begin([&] {
        latestOutcome_.reset();
        Command6(kProgramIndex).SetEnabled(false);
        Link link(machine_.hid, IsTransmitter);
        if (FindTransmitter(link)) Operate(operation, programme, link);
        Command6(kProgramIndex).SetEnabled(true);
    });
}

void FormWeb::Command2_Click() {
    BeginOperation(kReadOperation, {});
}

void FormWeb::Verify() {
    BeginOperation(kVerifyOperation, GatherProgramme());
}

void FormWeb::Inspect() {
    BeginOperation(kInspectOperation, {});
}

void FormWeb::AwaitRemoval() {
    BeginOperation(kRemovalOperation, {});
}

void FormWeb::Command4_Click() {
    Begin([this] {
        if (const auto path = machine_.desktop.ChooseFile(kDialogTitle, kDialogFilter)) OpenOrExplain(*path);
    });
}

void FormWeb::DropFile(const std::string& path) {
    Begin([&] { OpenOrExplain(path); });
}

void FormWeb::OpenOrExplain(const std::string& path) {
    if (path.empty()) return;
    const LoadResult load = Aprifilevento(path);
    if (load.problem)
        machine_.desktop.ShowMessage(DescribeLoadProblem(*load.problem).In(PanelLanguage()), path);
}

void FormWeb::Command6_Click(std::int16_t index) {
    // The cancel flag may be set on top of a running operation: that is what it is for.
    if (index != kCancelHolder) {
        Begin([&] { Act(index); });
    } else if (!ended_) {
        Act(index);
    }
}

void FormWeb::Act(std::int16_t index) {
    if (index != kCancelHolder) latestOutcome_.reset();
    Label1.SetVisible(true);
    Command6(kProgramIndex).SetEnabled(false);
    Programme programme;
    if (index == kProgramIndex || index == kSecondEntryIndex) programme = GatherProgramme();
    Command6(kProgramIndex).SetEnabled(true);
    Link link(machine_.hid, IsTransmitter);
    if (!FindTransmitter(link)) return;
    switch (index) {
        case kProgramIndex:
            Operate(kProgramOperation, programme, link);
            break;
        case kCancelHolder:
            Command6(kCancelHolder).SetTag(kTagTrue);
            break;
        case kSendRIndex:
            SendFrameR(link, KindFor(link.vendorId).timing);
            break;
        case kSendQIndex:
            SendFrameQ(link);
            break;
        default:
            break;
    }
}

// Looks for the transmitter and tells the operator if there is none, or none that may be opened.
bool FormWeb::FindTransmitter(Link& link) {
    const TransmitterSearch search = LocateTransmitter(link);
    if (search.found) return true;
    const Sentence advice = search.obstacle ? AdviseOn(*search.obstacle, machine_.backEnd) : Sentence{};
    machine_.desktop.ShowMessage(kMissingTransmitter.In(PanelLanguage()), advice.In(PanelLanguage()));
    return false;
}

Programme FormWeb::GatherProgramme() const {
    Programme programme;
    for (std::size_t c = 0; c < kColumns; ++c) {
        programme.LabelRecords[c] = RecordOf(ListView1[c]);
        programme.ListARecords[c] = RecordOf(ListView2[c]);
        programme.ListBRecords[c] = RecordOf(ListView3[c]);
    }
    return programme;
}

void FormWeb::Operate(std::int16_t operation, const Programme& programme, Link& link) {
    const auto yield = [this] {
        machine_.desktop.Yield();
        if (ended_) throw ProgramEnded{};
    };
    const std::string waitingText =
        operation == kRemovalOperation
            ? Phrase{"Togliere il telecomando", "Take the remote away"}.In(PanelLanguage())
            : std::string(PanelTextFor(PanelText::waitingForRemote, PanelLanguage()));
    const OperationContext context{Label1,      Command6(kCancelHolder), ProgressBar1,
                                   waitingText, machine_.clock,          yield};
    ongoing_ = {};
    {
        const During<const OperationOutcome*> running(running_, &ongoing_);
        const auto awake = machine_.backEnd == platform::HidBackEnd::simulation
                               ? nullptr
                               : machine_.desktop.InhibitSleep(kWhyAwake.In(PanelLanguage()));
        RunOperation(operation, programme, KindFor(link.vendorId), context, link,
                     {Text1, machine_, PanelLanguage(), ongoing_});
        link.conversation.reset();
    }
    latestOutcome_ = std::exchange(ongoing_, {});
    Label1.SetCaption(latestOutcome_->message);
    if (operation != kProgramOperation || latestOutcome_->code != ResultCode::success) return;
    const Sentence losses = DescribeLosses(latestOutcome_->programming);
    if (losses.Empty()) return;
    machine_.desktop.ShowMessage(kIncompleteProgramming.In(PanelLanguage()), losses.In(PanelLanguage()));
}

void FormWeb::Cancel() {
    if (!ended_ && Command6(kCancelHolder).Enabled()) Command6(kCancelHolder).SetTag(kTagTrue);
}

LoadResult FormWeb::Aprifilevento(const std::string& nnfilevento) {
    LoadResult load = vento::Aprifilevento(
        nnfilevento, machine_.files, {ListView1, ListView2, ListView3, Label2, Command6(kProgramIndex)});
    latestLoadProblem_ = load.problem;
    return load;
}

}  // namespace vento
