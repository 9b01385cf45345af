#include "simulator/json_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "simulator/scenario_error.h"

namespace vento::simulator {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kDeepest = 16;

/// Follows the parser through the document and refuses what it would let pass.
class Strictness {
  public:
    void See(Json::parse_event_t event, const Json& parsed) {
        using Event = Json::parse_event_t;
        switch (event) {
            case Event::object_start:
            case Event::array_start:
                if (levels_.size() == kDeepest) throw ScenarioError(Path() + ": nested too deeply");
                levels_.emplace_back().isList = event == Event::array_start;
                break;
            case Event::object_end:
            case Event::array_end:
                levels_.pop_back();
                Advance();
                break;
            case Event::key:
                levels_.back().key = parsed.get_ref<const std::string&>();
                if (!levels_.back().keys.insert(levels_.back().key).second) {
                    throw ScenarioError(Path() + ": expected this key once, found it again");
                }
                break;
            case Event::value:
                Advance();
                break;
        }
    }

  private:
    struct Level {
        bool isList = false;
        std::size_t index = 0;
        std::string key;
        std::set<std::string> keys;
    };

    void Advance() {
        if (!levels_.empty()) ++levels_.back().index;
    }

    [[nodiscard]] std::string Path() const {
        std::string path;
        for (const Level& level : levels_) {
            if (level.isList) {
                path += "[" + std::to_string(level.index) + "]";
            } else {
                path += (path.empty() ? "" : ".") + level.key;
            }
        }
        return path;
    }

    std::vector<Level> levels_;
};

/// What the parser says, without the number that it gives its errors, and in ASCII.
std::string Reason(std::string text) {
    const std::size_t end = text.find("] ");
    if (text.starts_with('[') && end != std::string::npos) text.erase(0, end + 2);
    std::ranges::replace_if(
        text, [](char each) { return static_cast<unsigned char>(each) > 126; }, '?');
    return text;
}

}  // namespace

Json ParseJson(std::string_view text) {
    Strictness strictness;
    const auto see = [&](int, Json::parse_event_t event, Json& parsed) {
        strictness.See(event, parsed);
        return true;
    };
    try {
        return Json::parse(text, see);
    } catch (const Json::exception& error) {
        throw ScenarioError("expected JSON: " + Reason(error.what()));
    }
}

}  // namespace vento::simulator
