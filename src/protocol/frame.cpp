#include "protocol/frame.h"

namespace vento {

void Frame::AppendLowFirst(std::uint16_t word) {
    Append(LowByte(word));
    Append(HighByte(word));
}

Frame BuildRemoteFrame(std::uint16_t linkFactor, std::span<const std::uint8_t> sendBytes,
                       std::uint8_t replyCount) {
    Frame frame;
    frame.Append(static_cast<std::uint8_t>(sendBytes.size() + 6));
    frame.Append(static_cast<std::uint8_t>(FrameType::remote));
    frame.AppendLowFirst(linkFactor);
    frame.Append(static_cast<std::uint8_t>(sendBytes.size()));
    for (const std::uint8_t byte : sendBytes)
        frame.Append(byte);
    frame.Append(replyCount);
    return frame;
}

}  // namespace vento
