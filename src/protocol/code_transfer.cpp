#include "protocol/code_transfer.h"

#include <algorithm>
#include <array>
#include <string>

#include "protocol/commands.h"

namespace vento {
namespace {

constexpr std::uint8_t kSecondByteOfWord = 52;
constexpr std::uint16_t kDataLinkFactorScale = 4;  // data frames alone carry the LinkFactor times this

std::uint8_t SumOfInverted(std::span<const std::uint8_t> bytes, std::uint8_t sum = 0) {
    for (const std::uint8_t byte : bytes)
        sum = static_cast<std::uint8_t>(sum + 255 - byte);
    return sum;
}

// Sends a frame that is answered with a checksum. True if a transmitter took it, the status is good and the
// checksum the expected one. A lost reply reads as the checksum 0, so a missing transmitter is asked for as
// well.
bool SendChecked(Reply& reply, const Frame& frame, std::uint8_t expected, Link& link) {
    const bool found = ExchangeOver(link, frame, true, reply).transmitterFound;
    return found && reply[0] == 0 && reply[1] == expected;
}

std::string ChecksumFault(const Link& link, const Reply& reply, std::uint8_t expected) {
    return "checksum " + std::to_string(expected) + " was expected, but " + DescribeLatest(link, reply) + ".";
}

std::string BlockAt(std::uint16_t offset) {
    return "The block at word " + std::to_string(offset);
}
std::string SectionAt(std::uint16_t offset) {
    return "The section at word " + std::to_string(offset);
}

}  // namespace

Transfer TransferCodeList(ProgressBar& progressBar, std::uint16_t offset, const OperationContext& context,
                          Link& link, std::span<const std::uint8_t> bytes) {
    Transfer transfer;
    Reply reply{};
    std::array<std::uint8_t, 2 * kBlockSize> words{};
    while (!bytes.empty()) {
        if (const auto code = OpenBlockWrite(reply, link); code != ResultCode::success) {
            transfer.result = Failure(code, BlockAt(offset) + " could not be announced", link, reply);
            return transfer;
        }
        const std::size_t count = std::min(bytes.size(), kBlockSize);
        for (std::size_t b = 0; b < count; ++b) {
            words[2 * b] = bytes[b];
            words[2 * b + 1] = kSecondByteOfWord;
        }
        const auto data = std::span(words).first(2 * count);
        // offset high, offset low, data bytes of the block; not answered
        const std::array<std::uint8_t, 3> header{HighByte(offset), LowByte(offset),
                                                 static_cast<std::uint8_t>(data.size())};
        ExchangeOver(link, BuildRemoteFrame(link.linkFactor, header, 0), false, reply);
        const std::uint8_t blockCheck = SumOfInverted(data, SumOfInverted(header));
        transfer.checkByte = SumOfInverted(data, transfer.checkByte);

        const auto dataLinkFactor = static_cast<std::uint16_t>(link.linkFactor * kDataLinkFactorScale);
        if (!SendChecked(reply, BuildRemoteFrame(dataLinkFactor, data, 1), blockCheck, link)) {
            transfer.result = {ResultCode::refused,
                               BlockAt(offset) + ": " + ChecksumFault(link, reply, blockCheck)};
            return transfer;
        }
        offset = static_cast<std::uint16_t>(offset + count);
        bytes = bytes.subspan(count);
        progressBar.SetValue(progressBar.Value() + static_cast<float>(count - 1));
        context.yield();
    }
    return transfer;
}

SequenceResult VerifyCodeList(std::uint16_t offset, std::uint16_t lastIndex, Link& link, ResultCode failCode,
                              std::uint8_t checkByte) {
    Reply reply{};
    if (OpenBlockVerify(reply, link) != ResultCode::success) {
        return Failure(failCode, SectionAt(offset) + " could not be verified", link, reply);
    }
    const std::array<std::uint8_t, 4> sendBytes{HighByte(offset), LowByte(offset), HighByte(lastIndex),
                                                LowByte(lastIndex)};
    if (!SendChecked(reply, BuildRemoteFrame(link.linkFactor, sendBytes, 1), checkByte, link)) {
        return {failCode, SectionAt(offset) + ": " + ChecksumFault(link, reply, checkByte)};
    }
    return {};
}

}  // namespace vento
