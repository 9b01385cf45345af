#include "console/programme_file.h"

#include <algorithm>
#include <utility>

#include "console/failure.h"
#include "console/input.h"
#include "platform/native.h"
#include "protocol/code_lists.h"
#include "protocol/commands.h"
#include "storage/json.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;
using storage::JsonNode;

constexpr std::array<std::string_view, 4> kColumnKeys{"column", "label", "listA", "listB"};

std::string JoinedBytes(const std::vector<std::uint8_t>& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += (text.empty() ? "" : ",") + std::to_string(byte);
    return text;
}

// A list is its numbers, if these give the same text again.
ordered_json ListFields(const std::string& text) {
    const ParsedCodeList list = ParseCodeList(text);
    if (!list.bad && JoinedBytes(list.bytes) == text) return list.bytes;
    return text;
}

// What a field of a programme file can hold.
std::string FieldText(const JsonNode& node) {
    const std::string& text = node.Text();
    if (text.find_first_of(";\n") != std::string::npos) {
        node.Refuse(Phrase{"un testo senza punto e virgola e senza line feed",
                           "a text without semicolon or line feed"});
    }
    if (Utf8FromWindows1252(Windows1252FromUtf8(text)) != text)
        node.Refuse(Phrase{"solo caratteri di Windows-1252", "characters of Windows-1252 alone"});
    return text;
}

std::string ListText(const JsonNode& node) {
    if (!node.IsList()) return FieldText(node);
    std::vector<std::uint8_t> bytes;
    const std::size_t count = node.Count(kWordsOfMemory, {"numeri", "numbers"});
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(node.Item(i).Byte());
    return JoinedBytes(bytes);
}

ProgrammeTexts TextsOf(const JsonNode& document) {
    constexpr std::array<std::string_view, 1> kKeys{"columns"};
    std::array<std::string_view, kColumns> names{};
    std::ranges::transform(kSections, names.begin(), &Section::name);
    document.AllowKeys(kKeys);
    ProgrammeTexts texts;
    const JsonNode columns = document.At("columns");
    const std::size_t count = columns.Count(kColumns, {"colonne", "columns"});
    for (std::size_t i = 0; i < count; ++i) {
        const JsonNode column = columns.Item(i);
        column.AllowKeys(kColumnKeys);
        auto& own = texts.at(column.At("column").Choice(names));
        if (own) {
            column.At("column").Refuse(
                Phrase{"una colonna che non c'è già", "a column that is not there yet"});
        }
        own = {FieldText(column.At("label")), ListText(column.At("listA")), ListText(column.At("listB"))};
    }
    return texts;
}

bool IsJson(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && text[first] == '{';
}

ProgrammeTexts LoadTexts(const std::string& path, platform::Files& files) {
    std::array<ListView, kColumns> labels;
    std::array<ListView, kColumns> listsA;
    std::array<ListView, kColumns> listsB;
    Label caption;
    Button button;
    const LoadResult load = Aprifilevento(path, files, {labels, listsA, listsB, caption, button});
    if (load.problem) {
        const bool unread = load.problem->reason == LoadProblem::Reason::cannotOpen;
        throw Failure(unread ? kMissingInput : kUnusableInput,
                      Labelled(path, DescribeLoadProblem(*load.problem)));
    }
    ProgrammeTexts texts;
    for (std::size_t c = 0; c < kColumns; ++c) {
        if (labels.at(c).Items().empty()) continue;
        texts.at(c) =
            ColumnTexts{std::string(labels.at(c).FirstItem()), std::string(listsA.at(c).FirstItem()),
                        std::string(listsB.at(c).FirstItem())};
    }
    return texts;
}

}  // namespace

FilesAndInput::FilesAndInput(const platform::Terminal& terminal)
    : terminal_(terminal), files_(platform::MakeNativeFiles()) {}

std::string FilesAndInput::ReadAll(const std::string& path, std::size_t most) {
    if (path != kStandardStream) return files_->ReadAll(path, most);
    if (!input_) input_ = ReadStandardInput(terminal_);
    if (input_->size() > most) throw platform::FileTooLarge();
    return *input_;
}

ReadProgramme ReadProgrammeTexts(const Console& console, const std::string& path) {
    FilesAndInput files(console.terminal);
    try {
        const std::string text = files.ReadAll(path, kLargestProgramme);
        if (!IsJson(text)) return {LoadTexts(path, files), false};
        const nlohmann::json document = storage::ParseJson(text);
        return {TextsOf(JsonNode(document)), true};
    } catch (const platform::FileError& error) {
        throw Failure(kMissingInput, About(path, error));
    } catch (const storage::ContentError& error) {
        throw Failure(kUnusableInput, About(path, error));
    }
}

ordered_json ProgrammeFields(const ProgrammeTexts& texts) {
    ordered_json columns = ordered_json::array();
    for (std::size_t c = 0; c < kColumns; ++c) {
        if (const auto& own = texts.at(c)) {
            columns.push_back({{"column", kSections.at(c).name},
                               {"label", own->label},
                               {"listA", ListFields(own->listA)},
                               {"listB", ListFields(own->listB)}});
        }
    }
    return {{"columns", columns}};
}

std::string ProgrammeFileOf(const ProgrammeTexts& texts) {
    std::string text;
    for (std::size_t c = 0; c < kColumns; ++c) {
        const auto& own = texts.at(c);
        if (!own) continue;
        for (const std::string& list : {own->listA, own->listB})
            text += std::to_string(c + 1) + ";" + own->label + ";" + list + ";;\n";
    }
    if (text.empty())
        text = " ";  // the loader takes a text without a line feed for a programme without columns
    const auto bytes = Windows1252FromUtf8(text);
    return {bytes.begin(), bytes.end()};
}

}  // namespace vento::console
