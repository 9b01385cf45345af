#include "protocol/commands.h"

#include <algorithm>

#include "protocol/frame.h"
#include "usb/report_exchange.h"

namespace vento {
namespace {

// Sends one command byte and tests its reply.
bool Command(Link& link, Reply& reply, std::uint8_t commandByte, std::uint8_t replyCount) {
    return SendCommand(link, reply, commandByte, replyCount) == ResultCode::success &&
           IsGoodReply(reply, commandByte);
}

// The one place where a command that did not work is put into words.
SequenceResult Conclude(bool worked, ResultCode failCode, const Phrase& failure, const Link& link,
                        const Reply& reply) {
    if (worked) return {};
    return {failCode, Fill({"{0}: {1}.", "{0}: {1}."}, {failure, DescribeLatest(link, reply)})};
}

}  // namespace

std::string VersionText(const RemoteVersion& version) {
    return std::to_string(version.VersionMajor) + "." + std::to_string(version.VersionMinor) + "." +
           std::to_string(version.VersionBuild);
}

bool IsGoodReply(const Reply& reply, std::uint8_t commandByte) {
    return reply[0] == 0 && reply[1] == commandByte;
}

Sentence DescribeLatest(const Link& link, const Reply& reply) {
    if (!link.latest.transmitterFound) {
        return Phrase{"nessun trasmettitore trovato", "no transmitter was found"};
    }
    if (!link.latest.written) {
        return Phrase{"il trasmettitore non ha accettato i dati", "the transmitter did not take the report"};
    }
    if (link.latest.reportsRead == 0) return Phrase{"nessuna risposta", "no reply came"};
    return Fill(
        {"la risposta aveva stato {0} e primo byte {1}", "the reply had status {0} and first byte {1}"},
        {std::to_string(reply[0]), std::to_string(reply[1])});
}

ResultCode SendCommand(Link& link, Reply& reply, std::uint8_t commandByte, std::uint8_t replyCount) {
    reply.fill(0);
    const Frame frame = BuildRemoteFrame(link.linkFactor, {&commandByte, 1}, replyCount);
    const auto wanted = std::span(reply).first(replyCount != 0 ? reply.size() : 0);
    return ExchangeReports(link, frame.Bytes(), wanted).transmitterFound ? ResultCode::success
                                                                         : ResultCode::refused;
}

ResultCode SendPrefixedCommand(Link& link, Reply& reply, std::uint8_t commandByte, std::uint8_t replyCount) {
    const bool worked =
        Command(link, reply, command::kPrefix, 1) && Command(link, reply, commandByte, replyCount);
    return worked ? ResultCode::success : ResultCode::refused;
}

SequenceResult ReleaseRemote(Link& link) {
    Reply reply{};
    const bool worked = Command(link, reply, command::kRelease, 1);
    return Conclude(worked, ResultCode::releaseFailed,
                    {"Il telecomando non ha confermato la fine della comunicazione",
                     "The remote did not acknowledge the end of the conversation"},
                    link, reply);
}

SequenceResult OpenBlockWrite(Link& link) {
    Reply reply{};
    const bool worked = Command(link, reply, command::kBlockWrite, 1);
    return Conclude(worked, ResultCode::refused,
                    {"Il telecomando non ha accettato un nuovo blocco", "The remote refused another block"},
                    link, reply);
}

SequenceResult OpenBlockVerify(Link& link) {
    Reply reply{};
    const bool worked = Command(link, reply, command::kBlockVerify, 1);
    return Conclude(worked, ResultCode::refused,
                    {"Il telecomando ha rifiutato la verifica", "The remote refused to be verified"}, link,
                    reply);
}

SequenceResult ReadSectionCount(Link& link, std::uint8_t& count) {
    Reply reply{};
    const bool worked = Command(link, reply, command::kSectionCount, 2);
    if (worked) count = reply[2];
    return Conclude(worked, ResultCode::sectionCountFailed,
                    {"Impossibile leggere il numero delle sezioni", "The section count could not be read"},
                    link, reply);
}

SequenceResult ReadSectionTable(Link& link, std::span<std::uint16_t> words) {
    Reply reply{};
    const auto replyCount = static_cast<std::uint8_t>(2 * words.size() + 1);
    const bool worked = Command(link, reply, command::kSectionTable, replyCount);
    for (std::size_t i = 0; worked && i < words.size(); ++i) {
        words[i] = static_cast<std::uint16_t>(reply.at(2 * i + 2) | (reply.at(2 * i + 3) << 8));
    }
    return Conclude(
        worked, ResultCode::sectionTableFailed,
        {"Impossibile leggere le posizioni delle sezioni", "The section offsets could not be read"}, link,
        reply);
}

SequenceResult ReadSectionOffsets(Link& link, SectionOffsets& offsets) {
    std::uint8_t count = 0;
    if (SequenceResult counted = ReadSectionCount(link, count); counted.Failed()) return counted;
    if (count == 0 || count > kSections.size()) {
        return {ResultCode::unusableData,
                Fill({"Il telecomando dichiara {0} sezioni; ne può avere da 1 a {1}.",
                      "The remote says that it has {0} sections; 1 to {1} were expected."},
                     {std::to_string(count), std::to_string(kSections.size())})};
    }
    SequenceResult read = ReadSectionTable(link, std::span(offsets.words).first(count));
    if (!read.Failed()) offsets.count = count;
    return read;
}

SequenceResult ReadRemoteVersion(Link& link, RemoteVersion& version) {
    Reply reply{};
    const bool worked = Command(link, reply, command::kVersion, 2);
    if (worked) version = RemoteVersion::FromByte(reply[2]);
    return Conclude(
        worked, ResultCode::versionFailed,
        {"Impossibile leggere la versione del telecomando", "The remote's version could not be read"}, link,
        reply);
}

SequenceResult WriteSectionFlags(Link& link, std::uint8_t value) {
    Reply reply{};
    const bool worked = Command(link, reply, command::kWriteFlags, 1) && Command(link, reply, value, 2);
    return Conclude(
        worked, ResultCode::remoteNotDetected,
        {"Il telecomando non ha confermato un comando", "The remote did not acknowledge its section flags"},
        link, reply);
}

SequenceResult ReadSectionFlags(Link& link, std::uint8_t& flags) {
    Reply reply{};
    const bool worked = SendPrefixedCommand(link, reply, command::kPrefixedFlags, 2) == ResultCode::success;
    if (worked) flags = reply[2];
    return Conclude(worked, ResultCode::sectionFlagsFailed,
                    {"Impossibile leggere lo stato delle sezioni", "The section flags could not be read"},
                    link, reply);
}

std::uint8_t ActivationByte(std::uint8_t state) {
    for (std::size_t i = 0; i < kSections.size(); ++i) {
        if ((state & kSections[i].SectionMask) == 0) return static_cast<std::uint8_t>((state & 0xF0) + i);
    }
    return 1;
}

SequenceResult ActivateFirstSection(Link& link) {
    constexpr std::uint8_t kComparedBits = 0xFB;  // the remote uses bit 2 of this echo for itself
    Reply reply{};
    bool worked = SendPrefixedCommand(link, reply, command::kPrefixedState, 2) == ResultCode::success;
    if (worked) {
        const std::uint8_t value = ActivationByte(reply[2]);
        worked = SendCommand(link, reply, value, 1) == ResultCode::success && reply[0] == 0 &&
                 (reply[1] & kComparedBits) == value;
    }
    return Conclude(worked, ResultCode::activationFailed,
                    {"Impossibile attivare la prima sezione", "The first section could not be activated"},
                    link, reply);
}

SequenceResult ReadRemoteBlock(Link& link, std::uint16_t offset, std::span<std::uint8_t> memory) {
    constexpr std::uint8_t kReplyCount = 8;  // asked for whatever the size of `memory`
    Reply reply{};
    const bool worked =
        SendPrefixedCommand(link, reply, command::kPrefixedBlockRead, 1) == ResultCode::success;
    if (worked) {
        const std::array<std::uint8_t, 3> sendBytes{HighByte(offset), LowByte(offset),
                                                    static_cast<std::uint8_t>(memory.size())};
        const Frame frame = BuildRemoteFrame(link.linkFactor, sendBytes, kReplyCount);
        ExchangeReports(link, frame.Bytes(), std::span(reply).first(memory.size() + 1));
        std::copy_n(reply.begin() + 1, memory.size(), memory.begin());
    }
    return Conclude(worked, ResultCode::blockReadFailed,
                    {"Impossibile leggere il nome di una sezione", "The head of a section could not be read"},
                    link, reply);
}

}  // namespace vento
