#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

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

/// Whether a device is one that the caller is looking for.
using Wanted = bool (*)(HidIdentity);

/// What became of the attempt to open an interface.
enum class OpenOutcome : std::uint8_t {
    opened,
    foreign,      ///< not a wanted device; it was left alone
    forbidden,    ///< there, but this user may not open it
    busy,         ///< there, but another program keeps it to itself
    held,         ///< there, but another VENTO is in the middle of an operation with it
    noBandwidth,  ///< there, but its USB bus has no room left for it
    failed,       ///< there, but not to be opened for another reason (it may just have gone)
};

/// Whether a device is there to be used, as far as that can be told without opening one.
enum class Presence : std::uint8_t {
    unknown,    ///< the host can't tell
    absent,     ///< there is none
    forbidden,  ///< there, but this user may not open it
    inUse,      ///< there, but another program works with it
    ready,      ///< there
};

/// The number by which a host knows an open device.
using HidHandle = std::intptr_t;

struct OpenAnswer {
    OpenOutcome outcome = OpenOutcome::failed;
    std::optional<HidIdentity> identity;  ///< where it is known, and always with `opened`
    HidHandle handle = -1;                ///< with `opened` only: the caller's, to be given back with Close
    int error = 0;                        ///< the system's number for what went wrong; 0 where it gave none
};

/// What came of moving one report.
struct ReportTransfer {
    bool whole = false;     ///< all of it crossed; anything else is a failure
    int error = 0;          ///< the system's number for what went wrong; 0 where it gave none
    std::size_t bytes = 0;  ///< that crossed
};

/// How many bytes the longest report of an interface has, its id not counted; a transmitter's have 64.
struct ReportLengths {
    std::size_t input = 0;
    std::size_t output = 0;

    friend bool operator==(const ReportLengths&, const ReportLengths&) = default;
};

/// What a host keeps from the first search of an operation to the operation's end; it lets go of it when the
/// last owner does.
class Conversation {
  public:
    Conversation() = default;
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;
    Conversation(Conversation&&) = delete;
    Conversation& operator=(Conversation&&) = delete;
    virtual ~Conversation() = default;
};

/// The HID interfaces of a machine, and reports to and from one of them. An interface is known by its path,
/// the system's name for it, which people may read. Nothing here throws for what a device does or fails to
/// do.
class HidHost {
  public:
    HidHost() = default;
    HidHost(const HidHost&) = delete;
    HidHost& operator=(const HidHost&) = delete;
    HidHost(HidHost&&) = delete;
    HidHost& operator=(HidHost&&) = delete;
    virtual ~HidHost() = default;

    /// Begins a conversation, or joins the one that this host is in. Null where the host keeps nothing.
    [[nodiscard]] virtual std::shared_ptr<Conversation> Converse() { return nullptr; }

    /// Calls `visit` with the path of each present interface, in an order that stays the same while nothing
    /// is plugged, until it answers that the search is over by false. A path is good for the call that gets
    /// it. `visit` may call any operation but this one.
    virtual void Search(const std::function<bool(std::string_view path)>& visit) = 0;

    /// Opens an interface for reading and writing, shared with others, if its identity is `wanted`. A host
    /// that can tell the identity beforehand leaves foreign devices unopened.
    [[nodiscard]] virtual OpenAnswer Open(std::string_view path, Wanted wanted) = 0;

    /// How long the reports of an open device are; nothing where that can't be told.
    [[nodiscard]] virtual std::optional<ReportLengths> Lengths(HidHandle /*device*/) { return std::nullopt; }

    /// Looks whether an interface with a `wanted` identity is there. Nothing is sent, and no device is opened
    /// where the system tells without. Of several, one that is ready counts, else the first.
    [[nodiscard]] virtual Presence Detect(Wanted /*wanted*/) { return Presence::unknown; }

    /// Sends one report, in 1 second at the most. One that is given up may still reach the device.
    virtual ReportTransfer Write(HidHandle device, const Report& report) = 0;

    /// Waits for one report, 1 second at the most. If it is whole, `report` holds it, with byte 0 of no
    /// meaning; otherwise `report` is unchanged.
    virtual ReportTransfer Read(HidHandle device, Report& report) = 0;

    /// Ends what is still under way on the device.
    virtual void Cancel(HidHandle device) = 0;

    virtual void Close(HidHandle device) = 0;
};

/// Hands everything on to another host, which outlives it. Who only listens overrides what it listens to.
class ForwardingHidHost : public HidHost {
  public:
    explicit ForwardingHidHost(HidHost& host) : host_(host) {}

    [[nodiscard]] std::shared_ptr<Conversation> Converse() override { return host_.Converse(); }
    void Search(const std::function<bool(std::string_view path)>& visit) override { host_.Search(visit); }
    [[nodiscard]] OpenAnswer Open(std::string_view path, Wanted wanted) override {
        return host_.Open(path, wanted);
    }
    [[nodiscard]] std::optional<ReportLengths> Lengths(HidHandle device) override {
        return host_.Lengths(device);
    }
    [[nodiscard]] Presence Detect(Wanted wanted) override { return host_.Detect(wanted); }
    ReportTransfer Write(HidHandle device, const Report& report) override {
        return host_.Write(device, report);
    }
    ReportTransfer Read(HidHandle device, Report& report) override { return host_.Read(device, report); }
    void Cancel(HidHandle device) override { host_.Cancel(device); }
    void Close(HidHandle device) override { host_.Close(device); }

  private:
    HidHost& host_;
};

}  // namespace vento::platform
