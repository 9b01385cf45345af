#include "console/recorded_exchange.h"

#include <algorithm>
#include <array>
#include <span>

#include "protocol/commands.h"
#include "protocol/frame.h"
#include "protocol/transmitter_kinds.h"

namespace vento::console {
namespace {

struct KindEntry {
    std::string_view name;
    Phrase title;
};

// In the order of FrameKind.
constexpr std::array kKinds{
    KindEntry{"search", {"ricerca del trasmettitore", "search for the transmitter"}},
    KindEntry{"timing", {"temporizzazione del collegamento", "link timing"}},
    KindEntry{"frameR", {"frame R al trasmettitore", "frame R for the transmitter"}},
    KindEntry{"frameQ", {"frame Q al trasmettitore", "frame Q for the transmitter"}},
    KindEntry{"presence", {"attesa del telecomando (165)", "wait for the remote (165)"}},
    KindEntry{"version", {"versione (6)", "version (6)"}},
    KindEntry{"sectionCount", {"numero delle sezioni (4)", "section count (4)"}},
    KindEntry{"sectionTable", {"posizioni delle sezioni (5)", "section offsets (5)"}},
    KindEntry{"prefix", {"prefisso (8)", "prefix (8)"}},
    KindEntry{"flags", {"segni delle sezioni libere (8, 5)", "free-section flags (8, 5)"}},
    KindEntry{"openRead", {"lettura della memoria (8, 1)", "memory read (8, 1)"}},
    KindEntry{"memoryRange", {"parole da leggere", "words to read"}},
    KindEntry{"state", {"stato delle sezioni (8, 2)", "section state (8, 2)"}},
    KindEntry{"activation", {"attivazione della prima sezione", "activation of the first section"}},
    KindEntry{"openFlags", {"segni delle sezioni (7)", "section flags (7)"}},
    KindEntry{"flagValue", {"valore dei segni", "flag value"}},
    KindEntry{"openWrite", {"nuovo blocco (1)", "new block (1)"}},
    KindEntry{"blockHeader", {"intestazione del blocco", "block header"}},
    KindEntry{"blockData", {"dati del blocco", "block data"}},
    KindEntry{"openVerify", {"verifica (2)", "verify (2)"}},
    KindEntry{"verifyRange", {"parole da verificare", "words to verify"}},
    KindEntry{"release", {"fine della comunicazione (0)", "release (0)"}},
    KindEntry{"unknown", {"frame sconosciuto", "unknown frame"}},
};
static_assert(kKinds.size() == static_cast<std::size_t>(FrameKind::unknown) + 1);

constexpr std::size_t kFrameOverhead = 6;

FrameKind KindOfCommand(std::uint8_t byte) {
    switch (byte) {
        case command::kPresence:
            return FrameKind::presence;
        case command::kVersion:
            return FrameKind::version;
        case command::kSectionCount:
            return FrameKind::sectionCount;
        case command::kSectionTable:
            return FrameKind::sectionTable;
        case command::kPrefix:
            return FrameKind::prefix;
        case command::kWriteFlags:
            return FrameKind::openFlags;
        case command::kBlockWrite:
            return FrameKind::openWrite;
        case command::kBlockVerify:
            return FrameKind::openVerify;
        case command::kRelease:
            return FrameKind::release;
        default:
            return FrameKind::unknown;
    }
}

FrameKind KindOfByte(std::uint8_t byte, std::size_t replyCount, const FrameKinds& due) {
    if (due.Has(FrameKind::activation) && replyCount == 1) return FrameKind::activation;
    if (due.Has(FrameKind::flagValue) && replyCount == 2) return FrameKind::flagValue;
    // Two bytes and no more tell these from the commands that have the same byte without a prefix.
    if (byte == command::kPrefixedFlags && replyCount == 2) return FrameKind::flags;
    if (byte == command::kPrefixedState && replyCount == 2) return FrameKind::state;
    if (byte == command::kPrefixedBlockRead && due.Has(FrameKind::openRead)) return FrameKind::openRead;
    const bool isFlagValue = byte >= kCloseProgramming || AnnouncedSection(byte).has_value();
    if (replyCount == 2 && KindOfCommand(byte) == FrameKind::unknown && isFlagValue)
        return FrameKind::flagValue;
    return KindOfCommand(byte);
}

FrameKind KindOfRemoteFrame(const RecordedExchange& exchange, const FrameKinds& due) {
    const std::size_t size = exchange.sendBytes.size();
    if (due.Has(FrameKind::blockData) && exchange.replyCount == 1 && size > 1) return FrameKind::blockData;
    if (size == 1) return KindOfByte(exchange.SendByte(), exchange.replyCount, due);
    if (size == 3 && exchange.replyCount == 0) return FrameKind::blockHeader;
    if (size == 3 && exchange.replyCount == 8) return FrameKind::memoryRange;
    if (exchange.replyCount != 1 || size % 2 != 0) return FrameKind::unknown;
    const bool isRange = size == 4 && exchange.linkFactor < 4;  // data have four times the LinkFactor
    return isRange ? FrameKind::verifyRange : FrameKind::blockData;
}

std::vector<std::uint8_t> PayloadsOf(const RecordedCycle& cycle) {
    std::vector<std::uint8_t> bytes;
    for (const RecordedReport& report : cycle.reports) {
        if (report.outgoing) bytes.insert(bytes.end(), report.report.begin() + 1, report.report.end());
    }
    return bytes;
}

// The frame in the payloads, without what stands behind it; empty if there is none or not the whole of it.
std::span<const std::uint8_t> FrameIn(std::span<const std::uint8_t> payloads) {
    if (payloads.size() < 2) return {};
    const bool lengthExcludesItself = payloads[1] == static_cast<std::uint8_t>(FrameType::sendQ);
    const std::size_t length = payloads[0] + (lengthExcludesItself ? 1U : 0U);
    return length < 2 || length > payloads.size() ? std::span<const std::uint8_t>{} : payloads.first(length);
}

FrameKind ReadFrame(RecordedExchange& exchange, const FrameKinds& due) {
    const std::span frame(exchange.frame);
    if (frame.size() < 2) return FrameKind::unknown;
    switch (static_cast<FrameType>(frame[1])) {
        case FrameType::timing:
            return FrameKind::timing;
        case FrameType::sendR:
            return FrameKind::frameR;
        case FrameType::sendQ:
            return FrameKind::frameQ;
        case FrameType::remote:
            break;
        default:
            return FrameKind::unknown;
    }
    if (frame.size() <= kFrameOverhead || frame[4] != frame.size() - kFrameOverhead)
        return FrameKind::unknown;
    exchange.linkFactor = static_cast<std::uint16_t>(frame[2] | (frame[3] << 8U));
    const auto sent = frame.subspan(5, frame[4]);
    exchange.sendBytes.assign(sent.begin(), sent.end());
    exchange.replyCount = frame.back();
    return KindOfRemoteFrame(exchange, due);
}

Sentence WordCount(std::size_t count) {
    return Fill({"{0} {0:parola|parole}", "{0} {0:word|words}"}, {std::to_string(count)});
}

}  // namespace

std::string_view NameOf(FrameKind kind) {
    return kKinds.at(static_cast<std::size_t>(kind)).name;
}

Sentence TitleOf(FrameKind kind) {
    return kKinds.at(static_cast<std::size_t>(kind)).title;
}

RecordedExchange ReadExchange(const RecordedCycle& cycle, const FrameKinds& due) {
    RecordedExchange exchange;
    exchange.cycle = cycle.number;
    exchange.transmitter = cycle.found;
    exchange.found = cycle.found.has_value() || !cycle.beginsHere;
    exchange.whole = cycle.closed && cycle.beginsHere;
    const std::vector<std::uint8_t> payloads = PayloadsOf(cycle);
    const auto frame = FrameIn(payloads);
    exchange.frame.assign(frame.begin(), frame.end());
    exchange.written = !frame.empty();
    for (const RecordedReport& report : cycle.reports) {
        if (!report.ok) exchange.error = report.error;
        if (report.outgoing && !report.ok) exchange.written = false;
    }
    if (!payloads.empty()) exchange.kind = ReadFrame(exchange, due);
    if (!cycle.beginsHere && payloads.empty()) exchange.kind = FrameKind::unknown;
    for (const RecordedReport& report : cycle.reports) {
        if (report.outgoing || !report.ok || exchange.reply) continue;
        const std::size_t count = std::min(exchange.replyCount + 1, platform::kReportPayload);
        exchange.reply.emplace(report.report.begin() + 1,
                               report.report.begin() + 1 + static_cast<std::ptrdiff_t>(count));
    }
    return exchange;
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

std::optional<std::size_t> AnnouncedSection(std::uint8_t flagValue) {
    for (std::size_t i = 0; i < kSections.size(); ++i) {
        if (flagValue == kSections.at(i).SectionMask + kAnnounceSection) return i;
    }
    return std::nullopt;
}

Sentence DescribeArguments(const RecordedExchange& exchange) {
    const auto& sent = exchange.sendBytes;
    if (sent.empty() && exchange.kind != FrameKind::timing && exchange.kind != FrameKind::unknown) return {};
    switch (exchange.kind) {
        case FrameKind::timing:
            if (const auto& id = exchange.transmitter) return KindFor(id->vendorId).name;
            return {};
        case FrameKind::flagValue:
            if (const auto section = AnnouncedSection(sent[0])) {
                return Fill({"{0}: annuncia la sezione {1}", "{0}: announces section {1}"},
                            {std::to_string(sent[0]), kSections.at(*section).name});
            }
            return Fill({"{0}: chiude, scritte {1}", "{0}: closes, written {1}"},
                        {std::to_string(sent[0]), SectionsOf(sent[0])});
        case FrameKind::activation:
            return std::to_string(sent[0]);
        case FrameKind::memoryRange:
            return Fill({"{1} da {0}", "{1} from {0}"},
                        {std::to_string(WordOf(sent)), std::to_string(sent[2])});
        case FrameKind::blockHeader:
            return Fill({"{1} byte di dati da {0}", "{1} {1:byte|bytes} of data from {0}"},
                        {std::to_string(WordOf(sent)), std::to_string(sent[2])});
        case FrameKind::blockData:
            return WordCount(sent.size() / 2);
        case FrameKind::verifyRange:
            return Fill(
                {"da {0}, {1} in tutto", "from {0}, {1} in all"},
                {std::to_string(WordOf(sent)), std::to_string(WordOf(std::span(sent).subspan(2)) + 1U)});
        case FrameKind::unknown:
            return Fill({"{0} byte", "{0} {0:byte|bytes}"}, {std::to_string(exchange.frame.size())});
        default:
            return {};
    }
}

}  // namespace vento::console
