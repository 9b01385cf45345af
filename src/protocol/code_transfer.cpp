#include "protocol/code_transfer.h"

#include <algorithm>
#include <array>

#include "protocol/commands.h"
#include "usb/report_exchange.h"

namespace vento {
namespace {

constexpr std::uint8_t kSecondByteOfWord = 52;
constexpr std::uint16_t kDataLinkFactorScale = 4;  // data frames alone carry the LinkFactor times this

// Sends a frame that is answered with a checksum; the result says what is wrong if it is not the expected
// one. A lost reply reads as the checksum 0, so a missing transmitter is asked for as well.
SequenceResult SendChecked(Link& link, const Frame& frame, std::uint8_t expected, ResultCode failCode) {
    Reply reply{};
    const bool found = ExchangeReports(link, frame.Bytes(), reply).transmitterFound;
    if (found && reply[0] == 0 && reply[1] == expected) return {};
    return {failCode, Fill({"il telecomando doveva rispondere con la somma di controllo {0}, ma {1}.",
                            "checksum {0} was expected, but {1}."},
                           {std::to_string(expected), DescribeLatest(link, reply)})};
}

// The frame with the words of a block, each byte of the list followed by the constant one.
std::span<const std::uint8_t> MakeWords(std::span<const std::uint8_t> bytes,
                                        std::array<std::uint8_t, 2 * kBlockSize>& words) {
    for (std::size_t b = 0; b < bytes.size(); ++b) {
        words[2 * b] = bytes[b];
        words[2 * b + 1] = kSecondByteOfWord;
    }
    return std::span(words).first(2 * bytes.size());
}

// Writes one block; `data` are its words.
SequenceResult WriteBlock(Link& link, std::uint16_t offset, std::span<const std::uint8_t> data) {
    // offset high, offset low, data bytes of the block; not answered
    const std::array<std::uint8_t, 3> header{HighByte(offset), LowByte(offset),
                                             static_cast<std::uint8_t>(data.size())};
    ExchangeReports(link, BuildRemoteFrame(link.linkFactor, header, 0).Bytes(), {});
    const std::uint8_t blockCheck = SumOfInverted(data, SumOfInverted(header));
    const auto dataLinkFactor = static_cast<std::uint16_t>(link.linkFactor * kDataLinkFactorScale);
    return SendChecked(link, BuildRemoteFrame(dataLinkFactor, data, 1), blockCheck, ResultCode::refused);
}

}  // namespace

std::uint8_t SumOfInverted(std::span<const std::uint8_t> bytes, std::uint8_t sum) {
    for (const std::uint8_t byte : bytes)
        sum = static_cast<std::uint8_t>(sum + 255 - byte);
    return sum;
}

Transfer TransferCodeList(const OperationContext& context, Link& link, std::uint16_t offset,
                          std::span<const std::uint8_t> bytes) {
    Transfer transfer;
    std::array<std::uint8_t, 2 * kBlockSize> words{};
    for (std::size_t block = 1; !bytes.empty(); ++block) {
        const std::size_t count = std::min(bytes.size(), kBlockSize);
        const auto data = MakeWords(bytes.first(count), words);
        transfer.result = OpenBlockWrite(link);
        if (!transfer.result.Failed()) {
            transfer.wordsSent += count;
            transfer.checkByte = SumOfInverted(data, transfer.checkByte);
            transfer.result = WriteBlock(link, offset, data);
        }
        if (transfer.result.Failed()) {
            transfer.result.diagnostic = Fill({"Blocco {0}: {1}", "Block {0}: {1}"},
                                              {std::to_string(block), transfer.result.diagnostic});
            return transfer;
        }
        offset = static_cast<std::uint16_t>(offset + count);
        bytes = bytes.subspan(count);
        context.progressBar.SetValue(context.progressBar.Value() + static_cast<float>(count - 1));
        context.yield();
    }
    return transfer;
}

SequenceResult VerifyCodeList(Link& link, std::uint16_t offset, std::uint16_t lastIndex,
                              std::uint8_t checkByte) {
    SequenceResult result = OpenBlockVerify(link);
    if (!result.Failed()) {
        const std::array<std::uint8_t, 4> sendBytes{HighByte(offset), LowByte(offset), HighByte(lastIndex),
                                                    LowByte(lastIndex)};
        result = SendChecked(link, BuildRemoteFrame(link.linkFactor, sendBytes, 1), checkByte,
                             ResultCode::verificationFailed);
    }
    if (result.Failed()) {
        result = {ResultCode::verificationFailed,
                  Fill({"Verifica non riuscita: {0}", "Verification failed: {0}"}, {result.diagnostic})};
    }
    return result;
}

std::uint8_t CheckByteOf(std::span<const std::uint8_t> bytes) {
    std::uint8_t sum = 0;
    for (const std::uint8_t byte : bytes)
        sum = SumOfInverted(std::array{byte, kSecondByteOfWord}, sum);
    return sum;
}

}  // namespace vento
