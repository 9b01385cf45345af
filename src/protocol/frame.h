#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vento {

/// The second byte of every frame.
enum class FrameType : std::uint8_t {
    sendQ = 81,   // 'Q', for the transmitter
    sendR = 82,   // 'R', for the transmitter
    timing = 84,  // 'T', for the transmitter
    remote = 85,  // 'U', for the remote
};

/// Send bytes that one frame for the remote can carry: its length byte counts them and six more.
inline constexpr std::size_t kMaximumSendBytes = 249;

/// The bytes of one frame, 255 at the most.
class Frame {
  public:
    /// Throws std::out_of_range where the frame is full.
    void Append(std::uint8_t byte) {
        bytes_.at(size_) = byte;
        ++size_;
    }
    void AppendLowFirst(std::uint16_t word);
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const { return std::span(bytes_).first(size_); }

  private:
    std::array<std::uint8_t, kMaximumSendBytes + 6> bytes_{};
    std::size_t size_ = 0;
};

/// A frame for the remote: what the transmitter is to send on, and how much it is to bring back.
///
///   0       1     2, 3                    4   5 .. 4+n     5+n
///   length  'U'   LinkFactor, low first   n   sendBytes    replyCount
///
/// `sendBytes` holds 1 to 249 bytes. `replyCount` is what is wanted behind the status byte, 0 for no reply.
[[nodiscard]] Frame BuildRemoteFrame(std::uint16_t linkFactor, std::span<const std::uint8_t> sendBytes,
                                     std::uint8_t replyCount);

[[nodiscard]] constexpr std::uint8_t LowByte(std::uint32_t value) {
    return static_cast<std::uint8_t>(value & 0xFF);
}

[[nodiscard]] constexpr std::uint8_t HighByte(std::uint32_t value) {
    return static_cast<std::uint8_t>((value >> 8) & 0xFF);
}

}  // namespace vento
