#include "simulator/image.h"

#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/native.h"
#include "storage/json.h"
#include "storage/text_file.h"
#include "text/encoding.h"

namespace vento::simulator {

namespace fs = std::filesystem;
using storage::ContentError;
using storage::JsonNode;

namespace {

/// The second byte of a word as programmes have it.
constexpr std::uint8_t kSecondByte = 52;

std::uint16_t ReadOffset(const std::string& key, const JsonNode& node) {
    std::uint16_t offset = 0;
    const char* const end = key.data() + key.size();
    const auto [stop, error] = std::from_chars(key.data(), end, offset);
    const bool isPlain = error == std::errc() && stop == end && std::to_string(offset) == key;
    if (!isPlain) {
        node.Refuse(Phrase{"come chiave un offset decimale da 0 a 65535",
                           "a decimal offset from 0 to 65535 as the key"});
    }
    return offset;
}

Word ReadWord(const JsonNode& node, WordForm form) {
    if (form == WordForm::firstByte || !node.IsList()) return {.first = node.Byte(), .second = kSecondByte};
    if (node.Count(2, {"byte", "bytes"}) != 2)
        node.Refuse(Phrase{"un byte o una lista di due", "a byte or a list of two"});
    return {.first = node.Item(0).Byte(), .second = node.Item(1).Byte()};
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

RemoteContents ParseImage(std::string_view text) {
    const nlohmann::json document = storage::ParseJson(text);
    const JsonNode root(document);
    static constexpr std::array<std::string_view, 2> kKeys = {"free", "memory"};
    root.AllowKeys(kKeys);
    return {.free = root.At("free").Byte(), .memory = ReadWordRuns(root.At("memory"), WordForm::anyWord)};
}

std::string WriteImage(const RemoteContents& contents) {
    return "{ \"free\": " + std::to_string(contents.free) +
           ",\n  \"memory\": " + WriteWordRuns(contents.memory) + " }\n";
}

/// True if there is a file to load. Nothing but a file in a folder that is there will do.
bool IsThere(const fs::path& file) {
    const fs::file_type type = platform::NativeFileType(file);
    if (type == fs::file_type::regular) return true;
    const bool isFree = type == fs::file_type::not_found;
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (isFree && platform::NativeFileType(folder) == fs::file_type::directory) return false;
    throw ContentError(Phrase{"previsto un file normale, o un nome per uno in una cartella esistente",
                              "expected a regular file, or a name for one in a folder that is there"});
}

Sentence Named(const fs::path& file, const ReasonedError& error) {
    return Fill({"immagine {0}: {1}", "image {0}: {1}"}, {Utf8FromPath(file), error.Reason()});
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
            if (taken[place]) {
                list.Item(i).Refuse(
                    Phrase{"una parola che nessun'altra lista contiene", "a word that no other list holds"});
            }
            taken[place] = true;
            run.push_back(ReadWord(list.Item(i), form));
        }
    }
    return runs;
}

Image::Image(fs::path file, Remote& remote) : file_(std::move(file)), remote_(remote) {
    try {
        if (!IsThere(file_)) return;
        remote_.SetContents(ParseImage(storage::ReadText(file_)));
    } catch (const ContentError& error) {
        throw ContentError(Named(file_, error));
    } catch (const platform::FileError& error) {
        throw platform::FileError(Named(file_, error));
    }
    saved_ = WriteImage(remote_.Contents());
}

Image::~Image() {
    try {
        Save();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): whoever must know has called Save
    }
}

void Image::Save() {
    std::string text = WriteImage(remote_.Contents());
    if (text == saved_) return;
    try {
        storage::ReplaceText(file_, text);
    } catch (const platform::FileError& error) {
        throw ImageError(Named(file_, error));
    }
    saved_ = std::move(text);
}

}  // namespace vento::simulator
