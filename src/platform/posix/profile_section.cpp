#include <algorithm>

#include "platform/posix/files.h"
#include "text/encoding.h"

namespace vento::platform {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Takes the first line off `text`, without its line end and the blanks around it.
std::string_view TakeLine(std::string_view& text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    return line.substr(0, line.find_last_not_of(kBlanks) + 1);
}

/// Leaves in `text` what follows the section's head.
bool SkipToSection(std::string_view section, std::string_view& text) {
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (!line.starts_with('[')) continue;
        if (SameButForCase(line.substr(1, line.find(']') - 1), section)) return true;
    }
    return false;
}

}  // namespace

std::size_t CopySection(std::string_view section, std::span<char> buffer, std::string_view text) {
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    std::size_t count = 0;
    buffer[0] = '\0';
    if (!SkipToSection(section, text)) return 0;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (line.starts_with('[')) break;
        if (line.empty() || line.starts_with(';')) continue;
        const std::size_t needed = line.size() + 1;
        if (needed >= buffer.size() - count) {  // no room for the line, its NUL and the last one
            const std::size_t end = buffer.size() - 2;
            if (count < end) line.copy(&buffer[count], end - count);
            buffer[end] = buffer[end + 1] = '\0';
            return end;
        }
        line.copy(&buffer[count], line.size());
        count += needed;
        buffer[count - 1] = buffer[count] = '\0';
    }
    return count;
}

}  // namespace vento::platform
