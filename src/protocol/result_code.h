#pragma once

#include <cstdint>

namespace vento {

/// The outcome of an operation. 0 is success, 1 to 99 are failures with a row of their own among the panel's
/// messages, 100 and above would have no message.
enum class ResultCode : std::uint8_t {
    success = 0,
    refused = 1,              ///< a step of a larger one failed; the larger one says what that means
    noTransmitter = 2,        ///< no transmitter among the HID interfaces
    remoteNotDetected = 3,    ///< the wait for the remote ran out, or a section flag was not acknowledged
    sectionTableFailed = 5,   ///< no section table, or no code bytes to send
    sectionCountFailed = 6,   ///< no section count
    notStarted = 9,           ///< the link timing did not reach a transmitter, or no such operation
    nothingSelected = 10,     ///< no selected column with a list in the chosen set
    releaseFailed = 11,       ///< the remote did not acknowledge the end of the conversation
    versionFailed = 12,       ///< no version
    cancelled = 13,           ///< the operator cancelled the wait
    unusableData = 15,        ///< the programme, or what the remote says of itself, can't be worked with
    verificationFailed = 18,  ///< a written section failed its checksum
    activationFailed = 19,    ///< the first section could not be activated
    blockReadFailed = 20,     ///< the head of a section could not be read
    sectionFlagsFailed = 21,  ///< no section flags
};

}  // namespace vento
