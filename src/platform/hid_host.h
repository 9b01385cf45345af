#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "text/language.h"

namespace vento::platform {

/// Bytes of a report behind the report id.
inline constexpr std::size_t kReportPayload = 64;

/// A HID report as it crosses the USB link: byte 0 is the report id, always 0, bytes 1 to 64 are the payload.
using Report = std::array<std::uint8_t, 1 + kReportPayload>;

/// What a HID interface says of its device.
struct HidIdentity {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;

    friend bool operator==(const HidIdentity&, const HidIdentity&) = default;
};

/// What became of the attempt to open an interface.
enum class OpenOutcome : std::uint8_t {
    opened,
    foreign,    ///< not a wanted device; it was left alone
    forbidden,  ///< there, but this user may not open it
    busy,       ///< there, but another program keeps it to itself
    failed,     ///< there, but not to be opened for another reason (it may just have gone)
};

/// The number by which a host knows an open device.
using HidHandle = std::intptr_t;

struct OpenAnswer {
    OpenOutcome outcome = OpenOutcome::failed;
    std::optional<HidIdentity> identity;  ///< where it is known, and always with `opened`
    HidHandle handle = -1;                ///< with `opened` only: the caller's, to be given back with Close
};

/// The HID interfaces of a machine, and reports to and from one of them.
///
/// A search goes `BeginSearch`, then `NextInterface` for each present interface in an order that stays the
/// same while nothing is plugged, then `EndSearch`. There is one search at a time. A handle outlives its
/// search. Nothing here throws for what a device does or fails to do.
class HidHost {
  public:
    HidHost() = default;
    HidHost(const HidHost&) = delete;
    HidHost& operator=(const HidHost&) = delete;
    HidHost(HidHost&&) = delete;
    HidHost& operator=(HidHost&&) = delete;
    virtual ~HidHost() = default;

    /// Takes stock of the interfaces that are present now and stands before the first.
    virtual void BeginSearch() = 0;

    /// Steps to the next interface; false behind the last one.
    [[nodiscard]] virtual bool NextInterface() = 0;

    /// The system's name of the current interface, for people to read.
    [[nodiscard]] virtual std::string InterfaceName() const = 0;

    /// Opens the current interface for reading and writing, shared with others, if `wanted` says yes to its
    /// identity. A host that can tell the identity beforehand leaves foreign devices unopened.
    [[nodiscard]] virtual OpenAnswer OpenInterface(bool (*wanted)(HidIdentity)) = 0;

    virtual void EndSearch() = 0;

    /// Sends one report; true only if all of it was taken.
    [[nodiscard]] virtual bool WriteReport(HidHandle device, const Report& report) = 0;

    /// Waits for one report, 1 second at the most. True only if a whole one came; `report` then holds it,
    /// with byte 0 of no meaning. `report` is unchanged otherwise.
    [[nodiscard]] virtual bool ReadReport(HidHandle device, Report& report) = 0;

    /// Ends what is still under way on the device.
    virtual void Cancel(HidHandle device) = 0;

    virtual void Close(HidHandle device) = 0;

    /// What a person can do about an interface that gave `forbidden`, `busy` or `failed`: a sentence or a
    /// few.
    [[nodiscard]] virtual std::string Advice(OpenOutcome outcome, Language language) const = 0;
};

}  // namespace vento::platform
