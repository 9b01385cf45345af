#include "storage/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "text/encoding.h"

namespace vento::storage {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kDeepest = 16;

// Follows the parser through the document and refuses what it would let pass.
class Strictness {
  public:
    void See(Json::parse_event_t event, const Json& parsed) {
        using Event = Json::parse_event_t;
        switch (event) {
            case Event::object_start:
            case Event::array_start:
                if (levels_.size() == kDeepest)
                    throw ContentError(Fill({"{0}: troppi livelli", "{0}: nested too deeply"}, {Path()}));
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
                    throw ContentError(
                        Fill({"{0}: questa chiave c'è già", "{0}: expected this key once, found it again"},
                             {Path()}));
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
                path += (path.empty() ? "" : ".") + Shorten(level.key, kQuotedCharacters);
            }
        }
        return path;
    }

    std::vector<Level> levels_;
};

// The parser quotes the whole of a text that breaks off.
constexpr std::size_t kMostOfReason = 200;

// What the parser says, without the number that it gives its errors, and in ASCII.
std::string Reason(std::string text) {
    const std::size_t end = text.find("] ");
    if (text.starts_with('[') && end != std::string::npos) text.erase(0, end + 2);
    std::ranges::replace_if(
        text, [](char each) { return static_cast<unsigned char>(each) > 126; }, '?');
    return Shorten(text, kMostOfReason);
}

constexpr std::size_t kShownCharacters = 60;
constexpr Phrase kObject{"un oggetto", "an object"};

// A value as an error shows it: as JSON in ASCII, cut off where it grows long.
Sentence Shown(const Json& value) {
    if (value.is_array()) return Fill({"una lista di {0}", "a list of {0}"}, {std::to_string(value.size())});
    if (value.is_object()) return kObject;
    const std::string text = value.dump(-1, ' ', true);
    return Shorten(text, kShownCharacters);
}

std::string Joined(std::span<const std::string_view> words) {
    std::string text;
    for (const std::string_view word : words)
        text.append(text.empty() ? "" : ", ").append(word);
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
        throw ContentError(Fill({"previsto JSON: {0}", "expected JSON: {0}"}, {Reason(error.what())}));
    }
}

void JsonNode::Refuse(const Sentence& expected) const {
    const Sentence place = path_.empty() ? Sentence(Phrase{"il tutto", "the whole"}) : Sentence(path_);
    const Sentence found = value_ == nullptr ? Sentence(Phrase{"nulla", "nothing"}) : Shown(*value_);
    throw ContentError(
        Fill({"{0}: previsto {1}, trovato {2}", "{0}: expected {1}, found {2}"}, {place, expected, found}));
}

bool JsonNode::IsNull() const {
    return value_ != nullptr && value_->is_null();
}

bool JsonNode::IsList() const {
    return value_ != nullptr && value_->is_array();
}

bool JsonNode::IsObject() const {
    return value_ != nullptr && value_->is_object();
}

std::vector<std::string> JsonNode::Keys() const {
    if (!IsObject()) Refuse(kObject);
    std::vector<std::string> keys;
    for (const auto& member : value_->items())
        keys.push_back(member.key());
    return keys;
}

void JsonNode::AllowKeys(std::span<const std::string_view> keys) const {
    for (const std::string& key : Keys()) {
        if (std::ranges::find(keys, key) != keys.end()) continue;
        At(key).Refuse(Fill({"nessun'altra chiave che {0}", "no other key than {0}"}, {Joined(keys)}));
    }
}

JsonNode JsonNode::At(std::string_view key) const {
    if (!IsObject()) Refuse(kObject);
    std::string path = (path_.empty() ? "" : path_ + ".") + Shorten(key, kQuotedCharacters);
    const auto found = value_->find(key);
    return {found == value_->end() ? nullptr : &*found, std::move(path)};
}

std::size_t JsonNode::Count(std::size_t most, const Phrase& items) const {
    if (!IsList() || value_->size() > most) {
        Refuse(Fill({"una lista di al massimo {0} {1}", "a list of {0} {1} at the most"},
                    {std::to_string(most), items}));
    }
    return value_->size();
}

JsonNode JsonNode::Item(std::size_t index) const {
    return {&value_->at(index), path_ + "[" + std::to_string(index) + "]"};
}

bool JsonNode::Boolean() const {
    if (value_ == nullptr || !value_->is_boolean()) Refuse(Phrase{"true o false", "true or false"});
    return value_->get<bool>();
}

const std::string& JsonNode::Text() const {
    if (value_ == nullptr || !value_->is_string()) Refuse(Phrase{"un testo", "a text"});
    return value_->get_ref<const std::string&>();
}

std::size_t JsonNode::Choice(std::span<const std::string_view> choices) const {
    if (value_ != nullptr && value_->is_string()) {
        const auto found = std::ranges::find(choices, std::string_view(Text()));
        if (found != choices.end()) return static_cast<std::size_t>(found - choices.begin());
    }
    Refuse(Fill({"uno di {0}", "one of {0}"}, {Joined(choices)}));
}

std::uint64_t JsonNode::Number(std::uint64_t least, std::uint64_t most) const {
    if (value_ != nullptr && value_->is_number_unsigned()) {
        const auto number = value_->get<std::uint64_t>();
        if (number >= least && number <= most) return number;
    }
    Refuse(Fill({"un numero intero da {0} a {1}", "a whole number from {0} to {1}"},
                {std::to_string(least), std::to_string(most)}));
}

}  // namespace vento::storage
