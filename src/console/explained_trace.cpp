#include "console/explained_trace.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <utility>

#include "protocol/code_transfer.h"
#include "protocol/commands.h"
#include "protocol/read_back.h"
#include "protocol/transmitter_kinds.h"

namespace vento::console {
namespace {

using Kind = FrameKind;

constexpr std::size_t kLooks = 2;  // of an operation for a transmitter, before its first frame
constexpr std::size_t kGoodPolls = 10;
constexpr std::size_t kMostBadPolls = 20000;  // divided by the LinkFactor
constexpr std::uint8_t kAnnouncement = 8;     // added to a section's mask
constexpr std::uint8_t kClosing = 128;        // added to the masks of what was written
constexpr std::uint8_t kActivationBits = 0xFB;
constexpr std::uint8_t kFirstBuildReadBack = 1;

std::string Text(std::size_t number) {
    return std::to_string(number);
}

std::uint16_t WordOf(std::span<const std::uint8_t> bytes) {  // high byte first
    return static_cast<std::uint16_t>(bytes[0] << 8U | bytes[1]);
}

Sentence WordCount(std::size_t count) {
    return Fill(count == 1 ? Phrase{"{0} parola", "{0} word"} : Phrase{"{0} parole", "{0} words"},
                {Text(count)});
}

std::uint8_t SumOfInverted(std::span<const std::uint8_t> bytes, std::uint8_t sum) {
    for (const std::uint8_t byte : bytes)
        sum = static_cast<std::uint8_t>(sum + 255 - byte);
    return sum;
}

// "TV, DTT", or a dash.
std::string SectionsOf(std::uint8_t bits) {
    std::string names;
    for (const Section& section : kSections) {
        if ((bits & section.SectionMask) == 0) continue;
        names += (names.empty() ? "" : ", ") + std::string(section.name);
    }
    return names.empty() ? "–" : names;
}

std::optional<std::size_t> AnnouncedSection(std::uint8_t value) {
    for (std::size_t i = 0; i < kSections.size(); ++i) {
        if (value == kSections.at(i).SectionMask + kAnnouncement) return i;
    }
    return std::nullopt;
}

enum class Purpose : std::uint8_t { unknown, program, read };

// One conversation as far as it was followed.
struct Conversation {
    FrameKinds due;         // what the protocol has next; nothing once it has no more
    bool followed = false;  // false as long as it is not known where the conversation stands
    Purpose purpose = Purpose::unknown;
    std::uint16_t linkFactor = 1;
    bool mayEnd = false;        // the operation may end here too
    std::size_t goodPolls = 0;  // in a row, of the latest wait
    std::size_t badPolls = 0;   // likewise
    std::size_t waits = 0;
    std::size_t looks = 0;  // for a transmitter, before the first frame
    bool joined = false;    // the trace begins in the latest wait
    std::uint8_t build = 0;
    SectionOffsets offsets;
    std::size_t sectionsRead = 0;
    bool readingCodes = false;
    std::uint8_t state = 0;
    // Of the section that is being written:
    std::optional<std::size_t> section;
    std::optional<std::size_t> latest;  // that was announced
    bool fromBegin = false;             // the trace has all of it
    std::size_t begin = 0;
    std::size_t words = 0;      // that were sent
    std::uint8_t check = 0;     // over them
    std::uint8_t verified = 0;  // masks of the sections that were
    std::vector<std::uint8_t> header;
};

// What stands for a frame whose search found nothing, where several are due: the one that comes first.
constexpr std::array kLikeliestFirst{
    Kind::timing,    Kind::presence,    Kind::openFlags,   Kind::openWrite,    Kind::openVerify,
    Kind::prefix,    Kind::release,     Kind::version,     Kind::sectionCount, Kind::sectionTable,
    Kind::flags,     Kind::openRead,    Kind::memoryRange, Kind::state,        Kind::activation,
    Kind::flagValue, Kind::blockHeader, Kind::blockData,   Kind::verifyRange};

class Follower {
  public:
    ExplainedTrace Follow(const RecordedTrace& trace) {
        for (const RecordedCycle& cycle : trace.cycles)
            Take(ReadExchange(cycle, at_.due));
        Conclude(trace);
        return std::move(result_);
    }

  private:
    void Take(RecordedExchange exchange) {
        if (exchange.kind == Kind::none && !(exchange.found && exchange.whole) && at_.followed &&
            !at_.due.Has(Kind::none)) {
            exchange.kind = Likeliest();
        }
        if (exchange.kind == Kind::presence && waiting_) {
            TakePoll(std::move(exchange));
            return;
        }
        waiting_ = false;
        ExplainedStep& step = result_.steps.emplace_back();
        step.firstCycle = exchange.cycle;
        const bool restarts = exchange.kind == Kind::none;
        const bool expected = !at_.followed || at_.due.Has(exchange.kind) || (restarts && MayEnd());
        if (!expected) Deviate(Expected());
        const bool joins = exchange.kind == Kind::presence && !at_.followed;
        if (restarts) {
            const std::size_t looks = at_.due.Has(Kind::none) ? at_.looks + 1 : 1;
            at_ = {};
            at_.looks = looks;
            at_.due = looks < kLooks ? FrameKinds{Kind::none, Kind::timing} : FrameKinds{Kind::timing};
        }
        if (restarts || exchange.kind == Kind::timing || exchange.kind == Kind::presence) at_.followed = true;
        if (exchange.kind == Kind::presence) {
            waiting_ = true;
            at_.joined = joins;
            at_.goodPolls = at_.badPolls = step.count = 0;
            ++at_.waits;
            TakePoll(std::move(exchange));
            return;
        }
        step.exchange = std::move(exchange);
        if (restarts) {
            Answer(step.exchange.found ? FoundSentence() : NotFound(), !step.exchange.found);
            if (!step.exchange.found) at_.due = {Kind::none};
            return;
        }
        const bool good = Judge();
        if (!BreaksOff()) Advance(step.exchange.kind, good);
    }

    // The trace ends before it can be said what came of the exchange.
    [[nodiscard]] bool BreaksOff() {
        const RecordedExchange& exchange = Step().exchange;
        const bool answered = exchange.written && (exchange.reply || !exchange.WantsReply());
        return exchange.found && !exchange.whole && exchange.error == 0 && !answered;
    }

    // The operator may cancel a wait, and a programme that can't be sent ends a run behind the version.
    [[nodiscard]] bool MayEnd() const {
        return at_.due.Empty() || at_.mayEnd || at_.due.Has(Kind::presence) || at_.due.Has(Kind::none);
    }

    [[nodiscard]] Kind Likeliest() const {
        const auto* const found =
            std::ranges::find_if(kLikeliestFirst, [this](Kind kind) { return at_.due.Has(kind); });
        return found != kLikeliestFirst.end() ? *found : Kind::none;
    }

    void TakePoll(RecordedExchange exchange) {
        ExplainedStep& step = result_.steps.back();
        const bool good = exchange.reply && exchange.reply->size() > 1 && (*exchange.reply)[0] == 0 &&
                          (*exchange.reply)[1] == command::kPresence;
        ++step.count;
        step.good += good ? 1 : 0;
        at_.goodPolls = good ? at_.goodPolls + 1 : 0;
        at_.badPolls += good ? 0 : 1;
        if (exchange.linkFactor > 0) at_.linkFactor = exchange.linkFactor;
        step.exchange = std::move(exchange);
        const bool over = at_.goodPolls == kGoodPolls;
        if (!over) at_.due = {Kind::presence};
        // Polls in front of the trace may have been good.
        if (!over && at_.joined) at_.due = {Kind::presence, Kind::version, Kind::sectionCount, Kind::prefix};
        if (at_.badPolls >= kMostBadPolls / at_.linkFactor) at_.due = {};
        waiting_ = !over;
        if (over) at_.due = DueAfterWait();
    }

    [[nodiscard]] FrameKinds DueAfterWait() const {
        if (at_.purpose == Purpose::read) return {Kind::sectionCount};
        if (at_.purpose == Purpose::program) return {Kind::prefix};
        if (at_.waits == 1) return {Kind::version};
        return {Kind::version, Kind::sectionCount, Kind::prefix};
    }

    // --- what came back ---

    [[nodiscard]] ExplainedStep& Step() { return result_.steps.back(); }

    bool Answer(const Sentence& text, bool failed = false) {
        Step().answer = text;
        Step().failed = failed;
        return !failed;
    }

    // An answer that the protocol does not have.
    bool Fail(const Sentence& text) {
        Answer(text, true);
        Deviate(text);
        return false;
    }

    void Deviate(const Sentence& text) {
        if (result_.firstDeviation) return;
        Step().deviation = text;
        result_.firstDeviation = result_.steps.size() - 1;
    }

    [[nodiscard]] static Sentence NotFound() {
        return Phrase{"nessun trasmettitore trovato", "no transmitter was found"};
    }

    [[nodiscard]] Sentence FoundSentence() {
        const auto& id = Step().exchange.transmitter;
        return Fill({"trovato, {0} (vendor id {1})", "found, {0} (vendor id {1})"},
                    {KindFor(id->vendorId).name, Text(id->vendorId)});
    }

    [[nodiscard]] Sentence Expected() const {
        Sentence kinds;
        for (auto i = 0U; i <= static_cast<unsigned>(Kind::unknown); ++i) {
            const auto kind = static_cast<Kind>(i);
            if (!at_.due.Has(kind)) continue;
            if (!kinds.Empty()) kinds += Phrase{" oppure ", " or "};
            kinds += TitleOf(kind);
        }
        if (kinds.Empty()) kinds = Phrase{"la fine dell'operazione", "the end of the operation"};
        return Fill({"previsto qui: {0}", "expected here: {0}"}, {kinds});
    }

    // Puts the answer into words; true if the protocol goes on as planned.
    bool Judge() {
        const RecordedExchange& exchange = Step().exchange;
        DescribeArguments();
        if (!exchange.found) return Fail(NotFound());
        if (!exchange.written) {
            if (BreaksOff()) return Answer(CutOff());
            return Fail(WithError(
                {"il trasmettitore non ha accettato i dati", "the transmitter did not take the report"}));
        }
        CheckFrame();
        if (!exchange.WantsReply())
            return Answer(Phrase{"senza risposta, come previsto", "not answered, as expected"});
        if (!exchange.reply) {
            if (BreaksOff()) return Answer(CutOff());
            if (exchange.kind == Kind::release || PassesWhenLost()) {
                return Answer(Phrase{"nessuna risposta, che qui vale come buona",
                                     "no reply, which passes for a good one here"});
            }
            return Fail(WithError({"nessuna risposta", "no reply"}));
        }
        return JudgeReply(*exchange.reply);
    }

    [[nodiscard]] static Sentence CutOff() { return Phrase{"la traccia finisce qui", "the trace ends here"}; }

    [[nodiscard]] Sentence WithError(const Phrase& text) {
        const int error = Step().exchange.error;
        return error == 0 ? Sentence(text)
                          : Fill({"{0} (errore {1} del sistema)", "{0} (error {1} of the system)"},
                                 {text, Text(static_cast<std::size_t>(error))});
    }

    // A lost reply reads as zeros.
    [[nodiscard]] bool PassesWhenLost() { return ExpectedByte() == 0; }

    // The byte behind the status that tells a good reply; nothing where any will do.
    [[nodiscard]] std::optional<std::uint8_t> ExpectedByte() {
        const RecordedExchange& exchange = Step().exchange;
        switch (exchange.kind) {
            case Kind::memoryRange:
                return std::nullopt;
            case Kind::blockData: {
                if (at_.header.empty()) return std::nullopt;
                return SumOfInverted(exchange.sendBytes, SumOfInverted(at_.header, 0));
            }
            case Kind::verifyRange:
                return at_.fromBegin ? std::optional(at_.check) : std::nullopt;
            default:
                return exchange.SendByte();
        }
    }

    bool JudgeReply(const std::vector<std::uint8_t>& reply) {
        const RecordedExchange& exchange = Step().exchange;
        if (exchange.kind != Kind::memoryRange && reply[0] != 0)
            return Fail(Fill({"rifiutato, stato {0}", "refused, status {0}"}, {Text(reply[0])}));
        const auto expected = ExpectedByte();
        const std::uint8_t mask = exchange.kind == Kind::activation ? kActivationBits : 0xFF;
        const std::uint8_t first = reply.size() > 1 ? reply[1] : 0;
        if (expected && (first & mask) != *expected) {
            const bool sum = exchange.kind == Kind::blockData || exchange.kind == Kind::verifyRange;
            return Fail(
                Fill(sum ? Phrase{"somma di controllo {0} invece di {1}", "checksum {0} instead of {1}"}
                         : Phrase{"eco {0} invece di {1}", "echo {0} instead of {1}"},
                     {Text(first), Text(*expected)}));
        }
        return JudgeContent(reply);
    }

    bool JudgeContent(const std::vector<std::uint8_t>& reply) {
        const std::uint8_t value = reply.size() > 2 ? reply[2] : 0;
        switch (Step().exchange.kind) {
            case Kind::version:
                at_.build = value & 15U;
                return Answer(Fill({"{0}.{1}, build {2}", "{0}.{1}, build {2}"},
                                   {Text(value >> 6U), Text((value >> 4U) & 3U), Text(at_.build)}));
            case Kind::sectionCount:
                at_.offsets.count = std::min<std::size_t>(value, kSections.size());
                if (value == 0 || value > kSections.size()) {
                    return Fail(Fill({"{0}; se ne aspettavano da 1 a {1}", "{0}; 1 to {1} were expected"},
                                     {Text(value), Text(kSections.size())}));
                }
                return Answer(Text(value));
            case Kind::sectionTable:
                return Answer(TakeOffsets(reply));
            case Kind::flags:
                return Answer(Fill({"libere: {0}", "free: {0}"}, {SectionsOf(value)}));
            case Kind::state:
                at_.state = value;
                return Answer(Fill({"libere: {0}", "free: {0}"}, {SectionsOf(value)}));
            case Kind::memoryRange:
                return Answer(
                    Fill({"nome \"{0}\"", "name \"{0}\""}, {DecodeName(std::span(reply).subspan(1))}));
            case Kind::blockData:
            case Kind::verifyRange:
                return Answer(
                    Fill({"somma di controllo {0}, giusta", "checksum {0}, right"}, {Text(reply.at(1))}));
            default:
                return Answer(Phrase{"confermato", "acknowledged"});
        }
    }

    Sentence TakeOffsets(const std::vector<std::uint8_t>& reply) {
        std::string text;
        for (std::size_t i = 0; i < kSections.size() && 2 * i + 3 < reply.size(); ++i) {
            at_.offsets.words.at(i) = static_cast<std::uint16_t>(reply[2 * i + 2] | reply[2 * i + 3] << 8U);
            text += (text.empty() ? "" : ", ") + std::string(kSections.at(i).name) + " " +
                    Text(at_.offsets.words.at(i));
        }
        return text;
    }

    // --- what went out ---

    void DescribeArguments() {
        const RecordedExchange& exchange = Step().exchange;
        const auto& sent = exchange.sendBytes;
        Sentence& text = Step().arguments;
        if (sent.empty() && exchange.kind != Kind::timing && exchange.kind != Kind::unknown) return;
        switch (exchange.kind) {
            case Kind::timing:
                if (const auto& id = exchange.transmitter) text = KindFor(id->vendorId).name;
                return;
            case Kind::flagValue:
                if (const auto section = AnnouncedSection(sent[0])) {
                    text = Fill({"{0}: annuncia la sezione {1}", "{0}: announces section {1}"},
                                {Text(sent[0]), kSections.at(*section).name});
                } else {
                    text = Fill({"{0}: chiude, scritte {1}", "{0}: closes, written {1}"},
                                {Text(sent[0]), SectionsOf(sent[0])});
                }
                return;
            case Kind::activation:
                text = Text(sent[0]);
                return;
            case Kind::memoryRange:
                text = Fill({"{1} da {0}", "{1} from {0}"}, {Text(WordOf(sent)), Text(sent[2])});
                return;
            case Kind::blockHeader:
                text = Fill({"{1} byte di dati da {0}", "{1} bytes of data from {0}"},
                            {Text(WordOf(sent)), Text(sent[2])});
                return;
            case Kind::blockData:
                text = WordCount(sent.size() / 2);
                return;
            case Kind::verifyRange:
                text = Fill({"da {0}, {1} in tutto", "from {0}, {1} in all"},
                            {Text(WordOf(sent)), Text(WordOf(std::span(sent).subspan(2)) + 1U)});
                return;
            case Kind::unknown:
                text = Fill({"{0} byte", "{0} bytes"}, {Text(exchange.frame.size())});
                return;
            default:
                return;
        }
    }

    void Demand(std::size_t value, std::size_t wanted, const Phrase& what) {
        if (value != wanted) {
            Deviate(Fill({"{0}: {1} invece di {2}", "{0}: {1} instead of {2}"},
                         {what, Text(value), Text(wanted)}));
        }
    }

    // What the protocol says of the frame itself.
    void CheckFrame() {
        const RecordedExchange& exchange = Step().exchange;
        const auto& sent = exchange.sendBytes;
        if (exchange.kind == Kind::timing && exchange.transmitter) {
            const TransmitterKind& kind = KindFor(exchange.transmitter->vendorId);
            at_.linkFactor = kind.timing.linkFactor;
            if (!std::ranges::equal(exchange.frame, BuildTimingFrame(kind.timing).Bytes())) {
                Deviate(Phrase{"non è la temporizzazione di questo trasmettitore",
                               "it is not the timing of this transmitter"});
            }
        }
        if (!at_.followed || sent.empty()) return;
        const std::size_t factor = exchange.kind == Kind::blockData ? 4U * at_.linkFactor : at_.linkFactor;
        Demand(exchange.linkFactor, factor, {"LinkFactor", "LinkFactor"});
        switch (exchange.kind) {
            case Kind::flagValue:
                CheckFlagValue(sent[0]);
                break;
            case Kind::activation:
                Demand(sent[0], ActivationByte(at_.state), {"valore", "value"});
                break;
            case Kind::memoryRange:
                Demand(WordOf(sent), at_.offsets.words.at(std::min(at_.sectionsRead, kSections.size() - 1)),
                       {"posizione", "offset"});
                break;
            case Kind::blockHeader:
                if (at_.section)
                    Demand(WordOf(sent), (at_.begin + at_.words) & 0xFFFFU, {"posizione", "offset"});
                break;
            case Kind::blockData:
                if (!at_.header.empty())
                    Demand(sent.size(), at_.header[2], {"byte di dati", "bytes of data"});
                break;
            case Kind::verifyRange:
                if (!at_.fromBegin || at_.words == 0) break;
                Demand(WordOf(sent), at_.begin, {"posizione", "offset"});
                Demand(WordOf(std::span(sent).subspan(2)), at_.words - 1, {"ultimo indice", "last index"});
                break;
            default:
                break;
        }
    }

    void CheckFlagValue(std::uint8_t value) {
        const auto section = AnnouncedSection(value);
        if (!section) {
            Demand(value, static_cast<std::size_t>(kClosing) + at_.verified,
                   {"valore dei segni", "flag value"});
        } else if (*section >= at_.offsets.count && at_.offsets.count > 0) {
            Deviate(Phrase{"il telecomando non ha questa sezione", "the remote has no such section"});
        } else if (at_.latest && *section <= *at_.latest) {
            Deviate(Phrase{"questa sezione non è dopo la precedente",
                           "this section does not follow the one before"});
        }
    }

    // --- what comes next ---

    void Next(FrameKinds due, bool mayEnd = false) {
        at_.due = due;
        at_.mayEnd = mayEnd;
    }

    void Advance(Kind kind, bool good) {
        switch (kind) {
            case Kind::timing:
                return Next(good ? FrameKinds{Kind::presence} : FrameKinds{}, true);
            case Kind::version:
                return Next(good ? FrameKinds{Kind::sectionCount, Kind::prefix} : FrameKinds{}, true);
            case Kind::sectionCount:
                if (at_.purpose == Purpose::unknown && at_.waits < 2) at_.purpose = Purpose::program;
                if (at_.purpose == Purpose::read) at_.readingCodes = true;
                return Next(good ? FrameKinds{Kind::sectionTable} : FrameKinds{});
            case Kind::sectionTable:
                if (!good) return Next({});
                if (at_.purpose == Purpose::read) return Next({Kind::prefix});
                return Next({Kind::openFlags, Kind::openVerify, Kind::prefix, Kind::release}, true);
            case Kind::release:
                return Next(ComesBack() ? FrameKinds{Kind::presence} : FrameKinds{}, true);
            case Kind::openFlags:
                at_.section.reset();
                at_.fromBegin = true;
                at_.words = 0;
                at_.check = 0;
                return Next(good ? FrameKinds{Kind::flagValue} : FrameKinds{Kind::openWrite, Kind::prefix});
            case Kind::flagValue:
                return AdvanceFlagValue();
            default:
                break;
        }
        if (at_.purpose == Purpose::unknown && kind == Kind::prefix && at_.waits == 1)
            at_.purpose = Purpose::read;
        AdvanceBlocks(kind, good);
        AdvancePrefixed(kind, good);
    }

    // Behind its first release a read goes on, if the remote can be read.
    [[nodiscard]] bool ComesBack() const {
        return at_.purpose == Purpose::read && !at_.readingCodes && at_.build >= kFirstBuildReadBack;
    }

    void AdvanceFlagValue() {
        if (const auto section = AnnouncedSection(Step().exchange.SendByte())) {
            at_.section = at_.latest = section;
            at_.begin = at_.offsets.words.at(*section);
            return Next({Kind::openWrite});
        }
        const bool sent = !Step().exchange.sendBytes.empty();
        Next(sent ? FrameKinds{Kind::prefix} : FrameKinds{Kind::openWrite, Kind::prefix});
    }

    void AdvanceBlocks(Kind kind, bool good) {
        const auto& sent = Step().exchange.sendBytes;
        switch (kind) {
            case Kind::openWrite:
                return Next(good ? FrameKinds{Kind::blockHeader} : FrameKinds{Kind::openFlags}, !good);
            case Kind::blockHeader:
                at_.header = sent;
                if (!at_.section && !sent.empty()) FindSection(WordOf(sent));
                return Next({Kind::blockData});
            case Kind::blockData:
                at_.words += sent.size() / 2;
                at_.check = SumOfInverted(sent, at_.check);
                if (!good) return Next({Kind::openFlags}, true);
                return Next(sent.size() < 2 * kBlockSize ? FrameKinds{Kind::openVerify}
                                                         : FrameKinds{Kind::openWrite, Kind::openVerify});
            case Kind::openVerify:
                return Next(good ? FrameKinds{Kind::verifyRange} : FrameKinds{});
            case Kind::verifyRange:
                if (!good) return Next({});
                if (!at_.section) return Next({Kind::openVerify, Kind::prefix, Kind::release}, true);
                at_.verified =
                    static_cast<std::uint8_t>(at_.verified | kSections.at(*at_.section).SectionMask);
                return Next({Kind::openFlags});
            default:
                return;
        }
    }

    // The announcement may have failed, or stand before the beginning of the trace.
    void FindSection(std::uint16_t offset) {
        at_.begin = offset;
        const auto all = at_.offsets.All();
        const auto found = std::ranges::find(all, offset);
        if (found != all.end()) at_.section = at_.latest = static_cast<std::size_t>(found - all.begin());
    }

    void AdvancePrefixed(Kind kind, bool good) {
        const bool reading = at_.purpose == Purpose::read;
        switch (kind) {
            case Kind::prefix:
                if (good) {
                    return Next(reading ? FrameKinds{Kind::flags, Kind::openRead}
                                        : FrameKinds{Kind::state, Kind::flags});
                }
                return Next(AfterFailedPrefix());
            case Kind::flags:
                if (!good) return Next({});
                return Next(at_.readingCodes ? FrameKinds{Kind::prefix}
                                             : FrameKinds{Kind::release, Kind::openVerify});
            case Kind::openRead:
                return good ? Next({Kind::memoryRange}) : NextSectionToRead();
            case Kind::memoryRange:
                return NextSectionToRead();
            case Kind::state:
                if (good) return Next({Kind::activation});
                return Next(AfterFailedPrefix());
            case Kind::activation:
                if (!good) return Next(AfterFailedPrefix());
                return Next(at_.waits > 1 ? FrameKinds{Kind::release} : FrameKinds{});
            default:
                return;
        }
    }

    // The first activation that fails is followed by one more, behind another wait.
    [[nodiscard]] FrameKinds AfterFailedPrefix() const {
        if (at_.purpose == Purpose::program && at_.waits == 1) return {Kind::presence};
        if (at_.purpose == Purpose::read && at_.sectionsRead > 0) return {Kind::prefix, Kind::release};
        return {};
    }

    void NextSectionToRead() {
        ++at_.sectionsRead;
        Next(at_.sectionsRead < at_.offsets.count ? FrameKinds{Kind::prefix} : FrameKinds{Kind::release});
    }

    void Conclude(const RecordedTrace& trace) {
        const bool open = trace.cutOff || (!trace.cycles.empty() && !trace.cycles.back().closed);
        const bool lost = result_.steps.empty() || result_.steps.back().exchange.kind == Kind::unknown;
        if (!lost && at_.due.Empty()) {
            result_.ending = Phrase{"L'operazione è finita qui.", "The operation ends here."};
        } else if (open || !MayEnd()) {
            result_.ending =
                Fill({"La traccia si interrompe a metà; {0}.", "The trace breaks off; {0}."}, {Expected()});
        } else {
            result_.ending = Fill({"La traccia finisce qui; {0}, se l'operazione non è finita o annullata.",
                                   "The trace ends here; {0}, unless the operation ended or was cancelled."},
                                  {Expected()});
        }
    }

    ExplainedTrace result_;
    Conversation at_;
    bool waiting_ = false;  // the latest step is a wait that is not over
};

}  // namespace

ExplainedTrace ExplainTrace(const RecordedTrace& trace) {
    return Follower().Follow(trace);
}

}  // namespace vento::console
