#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "protocol/frame.h"
#include "protocol/sequence.h"
#include "usb/gestione_hid.h"

/// Code lists on their way into the remote's memory. A byte of a list takes one word there, as the first of
/// the word's two bytes; the second is always 52. Checksums are the sum of the inverted bytes, modulo 256.
namespace vento {

/// The checksum of the link: the bytes inverted and added up to `sum`, modulo 256.
[[nodiscard]] std::uint8_t SumOfInverted(std::span<const std::uint8_t> bytes, std::uint8_t sum = 0);

/// Bytes of a list in one block.
inline constexpr std::size_t kBlockSize = 32;
static_assert(2 * kBlockSize <= kMaximumSendBytes, "a block fits the frame that carries its words");

struct Transfer {
    SequenceResult result;
    std::uint8_t checkByte = 0;  ///< over the words sent so far, for `VerifyCodeList`
    std::size_t wordsSent = 0;   ///< that may stand in the remote's memory now, acknowledged or not
};

/// Writes a list (1 byte at least) into the words from `offset` on, block by block, each acknowledged by the
/// remote with a checksum; `refused` at the first block that is not. The bar rises by one less than the bytes
/// of each block, and the event loop gets a turn after it.
[[nodiscard]] Transfer TransferCodeList(const OperationContext& context, Link& link, std::uint16_t offset,
                                        std::span<const std::uint8_t> bytes);

/// Has the remote add up the words from `offset` to `offset` plus `lastIndex`; success if it comes to
/// `checkByte`, else `verificationFailed`.
SequenceResult VerifyCodeList(Link& link, std::uint16_t offset, std::uint16_t lastIndex,
                              std::uint8_t checkByte);

/// The byte that `VerifyCodeList` expects of a list that was transferred whole.
[[nodiscard]] std::uint8_t CheckByteOf(std::span<const std::uint8_t> bytes);

}  // namespace vento
