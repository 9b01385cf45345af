#include "protocol/commands.h"

#include <algorithm>
#include <array>

#include "protocol/sections.h"

namespace vento {
namespace {

// Sends one command byte and tests its reply.
bool Command(Reply& reply, std::uint8_t commandByte, std::uint8_t replyCount, Link& link) {
    return SendCommand(reply, commandByte, replyCount, link) == ResultCode::success &&
           IsGoodReply(reply, commandByte);
}

// A command that brings back one byte behind its echo.
ResultCode ReadByte(Reply& reply, std::uint8_t commandByte, std::uint8_t& value, Link& link,
                    ResultCode failCode) {
    if (!Command(reply, commandByte, 2, link)) return failCode;
    value = reply[2];
    return ResultCode::success;
}

}  // namespace

bool IsGoodReply(const Reply& reply, std::uint8_t commandByte) {
    return reply[0] == 0 && reply[1] == commandByte;
}

ResultCode SendCommand(Reply& reply, std::uint8_t commandByte, std::uint8_t replyCount, Link& link) {
    const Frame frame = BuildRemoteFrame(link.linkFactor, {&commandByte, 1}, replyCount);
    return ExchangeOver(link, frame, replyCount != 0, reply).transmitterFound ? ResultCode::success
                                                                              : ResultCode::refused;
}

ResultCode SendPrefixedCommand(Reply& reply, std::uint8_t commandByte, Link& link, std::uint8_t replyCount) {
    const bool worked =
        Command(reply, command::kPrefix, 1, link) && Command(reply, commandByte, replyCount, link);
    return worked ? ResultCode::success : ResultCode::refused;
}

ResultCode ReleaseRemote(Reply& reply, Link& link, ResultCode failCode) {
    return Command(reply, command::kRelease, 1, link) ? ResultCode::success : failCode;
}

ResultCode OpenBlockWrite(Reply& reply, Link& link) {
    return Command(reply, command::kBlockWrite, 1, link) ? ResultCode::success : ResultCode::refused;
}

ResultCode OpenBlockVerify(Reply& reply, Link& link) {
    return Command(reply, command::kBlockVerify, 1, link) ? ResultCode::success : ResultCode::refused;
}

ResultCode ReadSectionCount(Reply& reply, std::uint8_t& count, Link& link, ResultCode failCode) {
    return ReadByte(reply, command::kSectionCount, count, link, failCode);
}

ResultCode ReadSectionTable(Reply& reply, std::span<std::uint16_t> words, Link& link, ResultCode failCode) {
    const auto replyCount = static_cast<std::uint8_t>(2 * words.size() + 1);
    if (!Command(reply, command::kSectionTable, replyCount, link)) return failCode;
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<std::uint16_t>(reply.at(2 * i + 2) | (reply.at(2 * i + 3) << 8));
    }
    return ResultCode::success;
}

ResultCode ReadRemoteVersion(Reply& reply, std::uint8_t& version, Link& link, ResultCode failCode) {
    return ReadByte(reply, command::kVersion, version, link, failCode);
}

ResultCode WriteSectionFlags(Reply& reply, std::uint8_t value, Link& link) {
    const bool worked = Command(reply, command::kWriteFlags, 1, link) && Command(reply, value, 2, link);
    return worked ? ResultCode::success : ResultCode::remoteNotDetected;
}

ResultCode ReadSectionFlags(Reply& reply, std::uint8_t& flags, Link& link, ResultCode failCode) {
    if (SendPrefixedCommand(reply, command::kPrefixedFlags, link, 2) != ResultCode::success) return failCode;
    flags = reply[2];
    return ResultCode::success;
}

std::uint8_t ActivationByte(std::uint8_t state) {
    for (std::size_t i = 0; i < kSections.size(); ++i) {
        if ((state & kSections[i].SectionMask) == 0) return static_cast<std::uint8_t>((state & 0xF0) + i);
    }
    return 1;
}

ResultCode ActivateFirstSection(Reply& reply, Link& link) {
    constexpr std::uint8_t kComparedBits = 0xFB;  // the remote uses bit 2 of this echo for itself
    if (SendPrefixedCommand(reply, command::kPrefixedState, link, 2) != ResultCode::success) {
        return ResultCode::activationFailed;
    }
    const std::uint8_t value = ActivationByte(reply[2]);
    if (SendCommand(reply, value, 1, link) != ResultCode::success || reply[0] != 0) {
        return ResultCode::activationFailed;
    }
    return (reply[1] & kComparedBits) == value ? ResultCode::success : ResultCode::activationFailed;
}

ResultCode ReadRemoteBlock(std::uint16_t offset, std::span<std::uint8_t> memory, Link& link,
                           ResultCode failCode) {
    Reply reply{};
    if (SendPrefixedCommand(reply, command::kPrefixedBlockRead, link, 1) != ResultCode::success) {
        return failCode;
    }
    const std::array<std::uint8_t, 3> sendBytes{HighByte(offset), LowByte(offset),
                                                static_cast<std::uint8_t>(memory.size())};
    ExchangeOver(link, BuildRemoteFrame(link.linkFactor, sendBytes, 8), true,
                 std::span(reply).first(memory.size() + 1));
    std::copy_n(reply.begin() + 1, memory.size(), memory.begin());
    return ResultCode::success;
}

}  // namespace vento
