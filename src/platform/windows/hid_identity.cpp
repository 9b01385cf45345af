#include "platform/windows/hid_identity.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>

namespace vento::platform {
namespace {

char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The four hexadecimal digits behind `key`, which is in lower case.
std::optional<std::uint16_t> NumberBehind(std::string_view key, std::string path) {
    constexpr std::size_t kDigits = 4;
    std::ranges::transform(path, path.begin(), Lower);
    const std::size_t found = path.find(key);
    if (found == std::string::npos) return std::nullopt;
    const std::string number = path.substr(found + key.size(), kDigits);
    std::uint16_t value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value, 16);
    const bool isWhole = number.size() == kDigits && read.ptr == number.data() + kDigits;
    return read.ec == std::errc{} && isWhole ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<HidIdentity> IdentityInPath(std::string_view path) {
    const auto vendor = NumberBehind("vid_", std::string(path));
    const auto product = NumberBehind("pid_", std::string(path));
    if (!vendor || !product) return std::nullopt;
    return HidIdentity{*vendor, *product};
}

}  // namespace vento::platform
