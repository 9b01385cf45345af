#include "platform/windows/hid_host.h"

#include "platform/windows/system.h"
#include "text/encoding.h"
// It needs that before it.
#include <setupapi.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vento::platform {
namespace {

HANDLE HandleOf(HidHandle device) {
    return reinterpret_cast<HANDLE>(device);
}

OpenOutcome OutcomeFor(DWORD error) {
    switch (error) {
        case ERROR_ACCESS_DENIED:
            return OpenOutcome::forbidden;
        case ERROR_SHARING_VIOLATION:
            return OpenOutcome::busy;
        default:
            return OpenOutcome::failed;
    }
}

/// The path by which a listed interface is opened; empty if the system doesn't give it.
std::string PathOf(HDEVINFO list, SP_DEVICE_INTERFACE_DATA& interfaceData) {
    DWORD size = 0;
    ::SetupDiGetDeviceInterfaceDetailA(list, &interfaceData, nullptr, 0, &size, nullptr);
    // The byte more ends the path whatever the system writes.
    std::vector<char> buffer(std::size_t{size} + 1 + sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A));
    auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(buffer.data());
    detail->cbSize = sizeof *detail;
    if (::SetupDiGetDeviceInterfaceDetailA(list, &interfaceData, detail, size, nullptr, nullptr) == 0)
        return {};
    return &detail->DevicePath[0];
}

/// The four hexadecimal digits behind `key`, which is in lower case.
std::optional<std::uint16_t> NumberBehind(std::string_view key, std::string path) {
    constexpr std::size_t kDigits = 4;
    std::ranges::transform(path, path.begin(), AsciiLower);
    const std::size_t found = path.find(key);
    if (found == std::string::npos) return std::nullopt;
    const std::string number = path.substr(found + key.size(), kDigits);
    std::uint16_t value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value, 16);
    const bool isWhole = number.size() == kDigits && read.ptr == number.data() + kDigits;
    return read.ec == std::errc{} && isWhole ? std::optional(value) : std::nullopt;
}

Presence PresenceFor(OpenOutcome outcome) {
    switch (outcome) {
        case OpenOutcome::opened:
            return Presence::ready;
        case OpenOutcome::forbidden:
            return Presence::forbidden;
        case OpenOutcome::busy:
        case OpenOutcome::held:
            return Presence::inUse;
        case OpenOutcome::foreign:
        case OpenOutcome::noBandwidth:
        case OpenOutcome::failed:
            break;
    }
    return Presence::absent;
}

}  // namespace

std::shared_ptr<Conversation> WindowsHidHost::Converse() {
    std::shared_ptr<WindowsHidHold> hold = hold_.lock();
    if (!hold) {
        hold = std::make_shared<WindowsHidHold>();
        hold_ = hold;
    }
    return hold;
}

void WindowsHidHost::Search(const std::function<bool(std::string_view path)>& visit) {
    GUID hidClass{};
    hid_.getHidGuid(&hidClass);
    const std::unique_ptr<void, decltype(&::SetupDiDestroyDeviceInfoList)> present(
        ::SetupDiGetClassDevsA(&hidClass, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE),
        &::SetupDiDestroyDeviceInfoList);
    if (present.get() == INVALID_HANDLE_VALUE) return;
    SP_DEVICE_INTERFACE_DATA interfaceData{};
    interfaceData.cbSize = sizeof interfaceData;
    for (DWORD index = 0;
         ::SetupDiEnumDeviceInterfaces(present.get(), nullptr, &hidClass, index, &interfaceData) != 0;
         ++index) {
        if (!visit(PathOf(present.get(), interfaceData))) return;
    }
}

Presence WindowsHidHost::Detect(Wanted wanted) {
    Presence found = Presence::absent;
    Search([&](std::string_view path) {
        const std::optional<HidIdentity> identity = IdentityInPath(path);
        if (!identity || !wanted(*identity)) return true;
        const OpenAnswer answer = Open(path, wanted);
        if (answer.outcome == OpenOutcome::opened) Close(answer.handle);
        const Presence one = PresenceFor(answer.outcome);
        if (found == Presence::absent || one == Presence::ready) found = one;
        return found != Presence::ready;
    });
    return found;
}

OpenAnswer WindowsHidHost::Open(std::string_view path, Wanted wanted) {
    // A device that is asleep stays so, and one that another program has for itself is not disturbed.
    const std::optional<HidIdentity> named = IdentityInPath(path);
    if (named && (!wanted(*named) || IsKeyboardPath(path))) {
        return {.outcome = OpenOutcome::foreign, .identity = named};
    }
    SECURITY_ATTRIBUTES inherited{
        .nLength = sizeof inherited, .lpSecurityDescriptor = nullptr, .bInheritHandle = TRUE};
    OwnedHandle device(::CreateFileA(std::string(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING,
                                     FILE_FLAG_OVERLAPPED, nullptr));
    if (!device) {
        const DWORD error = ::GetLastError();
        return {.outcome = OutcomeFor(error), .identity = named, .error = static_cast<int>(error)};
    }
    HIDD_ATTRIBUTES attributes{};
    attributes.Size = sizeof attributes;
    if (hid_.getAttributes(device.Get(), &attributes) == 0) {
        return {
            .outcome = OpenOutcome::failed, .identity = named, .error = static_cast<int>(::GetLastError())};
    }
    const HidIdentity identity{attributes.VendorID, attributes.ProductID};
    if (!wanted(identity)) return {.outcome = OpenOutcome::foreign, .identity = identity};
    const std::shared_ptr<WindowsHidHold> hold = hold_.lock();
    const bool free = hold ? hold->Holds(path) || hold->Take(path) : static_cast<bool>(LockInterface(path));
    if (!free) return {.outcome = OpenOutcome::held, .identity = identity};
    return {.outcome = OpenOutcome::opened,
            .identity = identity,
            .handle = reinterpret_cast<HidHandle>(device.Release())};
}

std::optional<ReportLengths> WindowsHidHost::Lengths(HidHandle device) {
    PHIDP_PREPARSED_DATA data = nullptr;
    if (hid_.getPreparsedData(HandleOf(device), &data) == 0) return std::nullopt;
    HIDP_CAPS caps{};
    const bool good = hid_.getCaps(data, &caps) == HIDP_STATUS_SUCCESS;
    hid_.freePreparsedData(data);
    if (!good) return std::nullopt;
    // Windows counts the byte of the id, whether there is one or not, but not where there is no report.
    const auto payload = [](std::size_t length) { return length > 0 ? length - 1 : 0; };
    return ReportLengths{.input = payload(caps.InputReportByteLength),
                         .output = payload(caps.OutputReportByteLength)};
}

ReportTransfer WindowsHidHost::Write(HidHandle device, const Report& report) {
    return transfers_.Write(HandleOf(device), report);
}

ReportTransfer WindowsHidHost::Read(HidHandle device, Report& report) {
    return transfers_.Read(HandleOf(device), report);
}

void WindowsHidHost::Cancel(HidHandle device) {
    ::CancelIo(HandleOf(device));
}

void WindowsHidHost::Close(HidHandle device) {
    const OwnedHandle closing(HandleOf(device));
}

bool IsKeyboardPath(std::string_view path) {
    constexpr std::string_view kEnd = "\\kbd";
    return path.size() >= kEnd.size() && SameButForCase(path.substr(path.size() - kEnd.size()), kEnd);
}

std::optional<HidIdentity> IdentityInPath(std::string_view path) {
    const auto vendor = NumberBehind("vid_", std::string(path));
    const auto product = NumberBehind("pid_", std::string(path));
    if (!vendor || !product) return std::nullopt;
    return HidIdentity{*vendor, *product};
}

}  // namespace vento::platform
