#pragma once

#include <string>
#include <vector>

namespace bench {

/// A table in Markdown. All rows have as many cells as there are titles.
struct Table {
    std::vector<std::string> titles;
    std::vector<std::vector<std::string>> rows;

    [[nodiscard]] std::string Markdown() const;
};

/// "1234", and "1.23".
std::string Whole(double number);
std::string Ratio(double number);

/// Puts `text` between the lines "<!-- NAME writes from here -->" and "<!-- to here -->" of a file, in place
/// of what is there. Throws std::runtime_error if the file does not have them.
void ReplaceSection(const std::string& path, const std::string& name, const std::string& text);

}  // namespace bench
