#include "panel/settings.h"

#include <cstddef>
#include <filesystem>

namespace vento {

std::vector<std::string> ReadSettingsSection(platform::Files& files, std::string_view section) {
    constexpr std::size_t kStep = 500;
    const std::filesystem::path file = files.ProgramFolder() / "Firmware" / "Quarzolab.ini";

    std::string buffer;
    std::size_t count = 0;
    do {  // a full buffer may have been cut off: ask again with a larger one
        buffer.assign(buffer.size() + kStep, ' ');
        count = files.ReadSection(section, buffer, file);
    } while (count >= buffer.size() - 2);

    std::vector<std::string> lines;
    std::string_view rest = std::string_view(buffer).substr(0, count);
    while (!rest.empty()) {
        const auto end = rest.find('\0');
        lines.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return lines;
}

}  // namespace vento
