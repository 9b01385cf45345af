#include "codec/report.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace bench {
namespace {

std::string Line(const std::vector<std::string>& cells) {
    std::string line = "|";
    for (const auto& cell : cells)
        line += " " + cell + " |";
    return line + "\n";
}

}  // namespace

std::string Table::Markdown() const {
    std::string text = Line(titles) + "|---|";
    for (std::size_t i = 1; i < titles.size(); ++i)
        text += "---:|";
    text += "\n";
    for (const auto& row : rows)
        text += Line(row);
    return text;
}

std::string Whole(double number) {
    return std::to_string(std::lround(number));
}

std::string Ratio(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", number);
    return text;
}

void ReplaceSection(const std::string& path, const std::string& name, const std::string& text) {
    std::ifstream in(path);
    std::string all{std::istreambuf_iterator<char>(in), {}};
    in.close();
    const std::string begin = "<!-- " + name + " writes from here -->\n";
    const auto first = all.find(begin);
    const auto last = all.find("<!-- to here -->", first);
    if (first == std::string::npos || last == std::string::npos)
        throw std::runtime_error(path + " has no place for the results of " + name);
    const auto inside = first + begin.size();
    all.replace(inside, last - inside, text);
    std::ofstream(path) << all;
}

}  // namespace bench
