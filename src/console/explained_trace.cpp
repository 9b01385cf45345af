#include "console/explained_trace.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "console/followed_conversation.h"
#include "protocol/code_transfer.h"
#include "protocol/commands.h"
#include "protocol/read_back.h"
#include "protocol/transmitter_kinds.h"

namespace vento::console {
namespace {

using Kind = FrameKind;

constexpr std::uint8_t kActivationBits = 0xFB;

std::string Text(std::size_t number) {
    return std::to_string(number);
}

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
            exchange.kind = at_.Likeliest();
        }
        if (exchange.kind == Kind::presence && waiting_) {
            TakePoll(std::move(exchange));
            return;
        }
        waiting_ = false;
        ExplainedStep& step = result_.steps.emplace_back();
        step.firstCycle = exchange.cycle;
        const bool restarts = exchange.kind == Kind::none;
        const bool expected = !at_.followed || at_.due.Has(exchange.kind) || (restarts && at_.MayEnd());
        if (!expected) Deviate(Expected());
        if (exchange.kind == Kind::presence) {
            waiting_ = true;
            step.count = 0;
            at_.BeginWait();
            TakePoll(std::move(exchange));
            return;
        }
        step.exchange = std::move(exchange);
        if (restarts) {
            const bool found = step.exchange.found;
            at_.TakeLook(found);
            Answer(found ? FoundSentence() : NotFound(), !found);
            return;
        }
        if (step.exchange.kind == Kind::timing) at_.followed = true;
        const bool good = Judge();
        if (!BreaksOff()) at_.Advance(step.exchange, good);
    }

    // The trace ends before it can be said what came of the exchange.
    [[nodiscard]] bool BreaksOff() {
        const RecordedExchange& exchange = Step().exchange;
        const bool answered = exchange.written && (exchange.reply || !exchange.WantsReply());
        return exchange.found && !exchange.whole && exchange.error == 0 && !answered;
    }

    void TakePoll(RecordedExchange exchange) {
        ExplainedStep& step = result_.steps.back();
        const bool good = exchange.reply && exchange.reply->size() > 1 && (*exchange.reply)[0] == 0 &&
                          (*exchange.reply)[1] == command::kPresence;
        ++step.count;
        step.good += good ? 1 : 0;
        waiting_ = !at_.TakePoll(good, exchange.linkFactor);
        step.exchange = std::move(exchange);
    }

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
        Step().arguments = DescribeArguments(exchange);
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
            // A lost reply reads as zeros.
            if (exchange.kind == Kind::release || at_.ExpectedByte(exchange) == 0) {
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

    bool JudgeReply(const std::vector<std::uint8_t>& reply) {
        const RecordedExchange& exchange = Step().exchange;
        if (exchange.kind != Kind::memoryRange && reply[0] != 0)
            return Fail(Fill({"rifiutato, stato {0}", "refused, status {0}"}, {Text(reply[0])}));
        const auto expected = at_.ExpectedByte(exchange);
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
                at_.version = RemoteVersion::FromByte(value);
                return Answer(Fill({"{0}.{1}, build {2}", "{0}.{1}, build {2}"},
                                   {Text(at_.version.VersionMajor), Text(at_.version.VersionMinor),
                                    Text(at_.version.VersionBuild)}));
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
                if (at_.purpose == FollowedConversation::Purpose::verify) break;
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
            Demand(value, static_cast<std::size_t>(kCloseProgramming) + at_.verified,
                   {"valore dei segni", "flag value"});
        } else if (*section >= at_.offsets.count && at_.offsets.count > 0) {
            Deviate(Phrase{"il telecomando non ha questa sezione", "the remote has no such section"});
        } else if (at_.latest && *section <= *at_.latest) {
            Deviate(Phrase{"questa sezione non è dopo la precedente",
                           "this section does not follow the one before"});
        }
    }

    void Conclude(const RecordedTrace& trace) {
        const bool open = trace.cutOff || (!trace.cycles.empty() && !trace.cycles.back().closed);
        const bool lost = result_.steps.empty() || result_.steps.back().exchange.kind == Kind::unknown;
        if (!lost && at_.due.Empty()) {
            result_.ending = Phrase{"L'operazione è finita qui.", "The operation ends here."};
        } else if (open || !at_.MayEnd()) {
            result_.ending =
                Fill({"La traccia si interrompe a metà; {0}.", "The trace breaks off; {0}."}, {Expected()});
        } else {
            result_.ending = Fill({"La traccia finisce qui; {0}, se l'operazione non è finita o annullata.",
                                   "The trace ends here; {0}, unless the operation ended or was cancelled."},
                                  {Expected()});
        }
    }

    ExplainedTrace result_;
    FollowedConversation at_;
    bool waiting_ = false;  // the latest step is a wait that is not over
};

}  // namespace

ExplainedTrace ExplainTrace(const RecordedTrace& trace) {
    return Follower().Follow(trace);
}

}  // namespace vento::console
