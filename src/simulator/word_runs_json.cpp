#include "simulator/word_runs_json.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <vector>

namespace vento::simulator {

using storage::JsonNode;

namespace {

/// The second byte of a word as programmes have it.
constexpr std::uint8_t kSecondByte = 52;

std::uint16_t ReadOffset(const std::string& key, const JsonNode& node) {
    std::uint16_t offset = 0;
    const char* const end = key.data() + key.size();
    const auto [stop, error] = std::from_chars(key.data(), end, offset);
    const bool isPlain = error == std::errc() && stop == end && std::to_string(offset) == key;
    if (!isPlain)
        node.Refuse(Phrase{"come chiave un offset decimale da 0 a 65535",
                           "a decimal offset from 0 to 65535 as the key"});
    return offset;
}

Word ReadWord(const JsonNode& node, WordForm form) {
    if (form == WordForm::firstByte || !node.IsList()) return {.first = node.Byte(), .second = kSecondByte};
    if (node.Count(2, {"byte", "bytes"}) != 2)
        node.Refuse(Phrase{"un byte o una lista di due", "a byte or a list of two"});
    return {.first = node.Item(0).Byte(), .second = node.Item(1).Byte()};
}

}  // namespace

WordRuns ReadWordRuns(const JsonNode& node, WordForm form) {
    WordRuns runs;
    std::vector<bool> taken(Remote::kMemoryWords);
    for (const std::string& key : node.Keys()) {
        const JsonNode list = node.At(key);
        const std::uint16_t offset = ReadOffset(key, list);
        std::vector<Word>& run = runs[offset];
        const std::size_t count = list.Count(Remote::kMemoryWords, {"parole", "words"});
        run.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t place = (offset + i) % Remote::kMemoryWords;
            if (taken[place])
                list.Item(i).Refuse(
                    Phrase{"una parola che nessun'altra lista contiene", "a word that no other list holds"});
            taken[place] = true;
            run.push_back(ReadWord(list.Item(i), form));
        }
    }
    return runs;
}

std::string WriteWordRuns(const WordRuns& runs) {
    std::string text = "{";
    std::string_view betweenRuns = " ";
    for (const auto& [offset, words] : runs) {
        text.append(betweenRuns).append("\"").append(std::to_string(offset)).append("\": [");
        std::string_view betweenWords;
        for (const Word& word : words) {
            text += betweenWords;
            const std::string first = std::to_string(word.first);
            if (word.second == kSecondByte) {
                text += first;
            } else {
                text.append("[").append(first).append(",").append(std::to_string(word.second)).append("]");
            }
            betweenWords = ",";
        }
        text += "]";
        betweenRuns = ",\n  ";
    }
    return text + " }";
}

}  // namespace vento::simulator
