#include "platform/windows/hid_identity.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace vento::platform {
namespace {

char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The four hexadecimal digits behind `key`, which is in lower case.
std::optional<std::uint16_t> NumberBehind(std::string_view key, std::string_view path) {
    constexpr std::size_t digits = 4;
    const auto found = std::ranges::search(path, key, {}, Lower);
    if (path.end() - found.end() < static_cast<std::ptrdiff_t>(digits)) return std::nullopt;
    const std::string_view number(found.end(), found.end() + digits);
    std::uint16_t value = 0;
    const auto read = std::from_chars(number.data(), number.data() + digits, value, 16);
    if (read.ec != std::errc{} || read.ptr != number.data() + digits) return std::nullopt;
    return value;
}

}  // namespace

std::optional<HidIdentity> IdentityInPath(std::string_view path) {
    const auto vendor = NumberBehind("vid_", path);
    const auto product = NumberBehind("pid_", path);
    if (!vendor || !product) return std::nullopt;
    return HidIdentity{*vendor, *product};
}

}  // namespace vento::platform
