#pragma once

#include <cstdint>
#include <span>

#include "controls/controls.h"
#include "protocol/link.h"
#include "protocol/operation_context.h"
#include "protocol/sequence_result.h"

/// Code lists on their way into the remote's memory. A byte of a list takes one word there, as the first of
/// the word's two bytes; the second is always 52. Checksums are the sum of the inverted bytes, modulo 256.
namespace vento {

/// Bytes of a list in one block. The length byte of the data frame would allow 124.
inline constexpr std::size_t kBlockSize = 32;

struct Transfer {
    SequenceResult result;
    std::uint8_t checkByte = 0;  ///< over the words sent so far, for `VerifyCodeList`
};

/// Writes a list (1 byte at least) into the words from `offset` on, block by block, each acknowledged by the
/// remote with a checksum; `refused` at the first block that is not. The bar rises by one less than the bytes
/// of each block, and the event loop gets a turn after it.
[[nodiscard]] Transfer TransferCodeList(ProgressBar& progressBar, std::uint16_t offset,
                                        const OperationContext& context, Link& link,
                                        std::span<const std::uint8_t> bytes);

/// Has the remote add up the words from `offset` to `offset` plus `lastIndex`; success if it comes to
/// `checkByte`, else `failCode`.
[[nodiscard]] SequenceResult VerifyCodeList(std::uint16_t offset, std::uint16_t lastIndex, Link& link,
                                            ResultCode failCode, std::uint8_t checkByte);

}  // namespace vento
