#include <array>
#include <span>
#include <string>

#include "console/commands.h"
#include "console/failure.h"
#include "console/input.h"
#include "console/output.h"
#include "console/programme_file.h"
#include "programme/fields.h"
#include "protocol/code_lists.h"
#include "protocol/commands.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

constexpr std::array kConvertArguments{
    ArgumentEntry{{"SRC", "SRC"},
                  {"Un file di programmazione, o un programma in JSON; - per lo standard input",
                   "A programme file, or a programme as JSON; - for standard input"}},
    ArgumentEntry{{"DEST", "DEST"},
                  {"L'altro dei due; senza DEST, o con -, lo standard output",
                   "The other one of the two; without it, or with -, standard output"},
                  false},
};

constexpr std::array kConvertOptions{kForceOption};

constexpr std::array kConvertExamples{
    Example{"convert VENTO-casa.qlb casa.json",
            {"Un programma da leggere e cambiare.", "A programme to read and change."}},
    Example{"convert casa.json VENTO-casa.qlb",
            {"E di nuovo un file di programmazione.", "And a programme file again."}},
};

// One list a line: JSON's own layout would give each number a line.
std::string LaidOut(const ordered_json& programme) {
    std::string text = "{\"columns\": [";
    const char* between = "\n";
    for (const auto& column : programme["columns"]) {
        text += std::string(between) + "  {\"column\": " + column["column"].dump() +
                ", \"label\": " + column["label"].dump();
        for (const char* list : {"listA", "listB"})
            text += ",\n   \"" + std::string(list) + "\": " + column[list].dump();
        text += "}";
        between = ",\n";
    }
    return text + "\n]}\n";
}

void RunConvert(const Console& console, Answer& answer) {
    answer.fields = {{"programme", nullptr}, {"bytesOut", nullptr}};
    const std::string source = console.options.Argument(0);
    const ReadProgramme read = ReadProgrammeTexts(console, source);
    answer.fields["programme"] = ProgrammeFields(read.texts);
    const std::string result =
        read.fromJson ? ProgrammeFileOf(read.texts) : LaidOut(answer.fields["programme"]);
    answer.fields["bytesOut"] = result.size();
    const bool hasDest = console.options.arguments.size() > 1;
    if (!hasDest && console.options.json) return;
    Output output(console, hasDest ? console.options.Argument(1) : kStandardStream, source);
    output.Save({reinterpret_cast<const std::uint8_t*>(result.data()), result.size()}, answer);
}

// --- diff ---

constexpr std::array kDiffArguments{
    ArgumentEntry{{"A", "A"}, {"Un programma, come file o in JSON", "A programme, as a file or as JSON"}},
    ArgumentEntry{{"B", "B"}, {"Un altro; - per lo standard input", "Another one; - for standard input"}},
};

std::string Number(std::size_t number) {
    return std::to_string(number);
}

// Two lists, as a remote would get them if they can be sent.
struct Comparison {
    bool same = true;
    std::size_t bytesA = 0;
    std::size_t bytesB = 0;
    std::size_t place = 0;      // of the first difference, from 1; 0 where one is the beginning of the other
    std::size_t different = 0;  // places that both have
    Sentence text;
};

Comparison CompareLists(const std::string& textA, const std::string& textB) {
    const ParsedCodeList a = ParseCodeList(TrimBlanks(textA));
    const ParsedCodeList b = ParseCodeList(TrimBlanks(textB));
    Comparison result{.bytesA = a.bytes.size(), .bytesB = b.bytes.size(), .text = {}};
    if (a.bad || b.bad) {
        result.same = TrimBlanks(textA) == TrimBlanks(textB);
        result.text = Phrase{"i testi sono diversi, e non sono entrambi una lista di numeri da 0 a 255",
                             "the texts differ, and not both are a list of numbers from 0 to 255"};
        return result;
    }
    for (std::size_t i = 0; i < std::min(a.bytes.size(), b.bytes.size()); ++i) {
        if (a.bytes[i] == b.bytes[i]) continue;
        if (result.different++ == 0) result.place = i + 1;
    }
    result.same = a.bytes == b.bytes;
    result.text = Fill({"{0} byte e {1}", "{0} {0:byte|bytes} and {1}"},
                       {Number(a.bytes.size()), Number(b.bytes.size())});
    if (result.different > 0) {
        result.text += Fill({", {0} {0:diverso|diversi}, il primo al posto {1}: {2} e {3}",
                             ", {0} {0:differs|differ}, the first at place {1}: {2} and {3}"},
                            {Number(result.different), Number(result.place),
                             Number(a.bytes[result.place - 1]), Number(b.bytes[result.place - 1])});
    } else {
        result.text +=
            Phrase{", uguali fin dove arriva la più corta", ", the same as far as the shorter one goes"};
    }
    return result;
}

class Difference {
  public:
    Difference(Language language, Answer& answer) : language_(language), answer_(answer) {
        answer_.fields = {{"same", true}, {"differences", ordered_json::array()}};
    }

    void Compare(std::size_t column, const std::optional<ColumnTexts>& a,
                 const std::optional<ColumnTexts>& b) {
        name_ = kSections.at(column).name;
        if (!a || !b) {
            if (a || b) {
                Note("", a ? Phrase{"manca in B", "missing in B"} : Phrase{"manca in A", "missing in A"});
            }
            return;
        }
        if (a->label != b->label) {
            Note("label",
                 Fill({"etichetta \"{0}\" e \"{1}\"", "label \"{0}\" and \"{1}\""}, {a->label, b->label}));
        }
        CompareList("A", a->listA, b->listA);
        CompareList("B", a->listB, b->listB);
    }

  private:
    void CompareList(const char* letter, const std::string& a, const std::string& b) {
        const bool bothEmpty = TrimBlanks(a).empty() && TrimBlanks(b).empty();
        const Comparison lists = CompareLists(a, b);
        if (bothEmpty || lists.same) return;
        Note("list" + std::string(letter), Fill({"lista {0}: {1}", "list {0}: {1}"}, {letter, lists.text}));
        ordered_json& fields = answer_.fields["differences"].back();
        fields["bytesA"] = lists.bytesA;
        fields["bytesB"] = lists.bytesB;
        fields["different"] = lists.different;
        if (lists.place > 0) fields["firstDifferent"] = lists.place;
    }

    void Note(const std::string& what, const Sentence& text) {
        answer_.status = kNotWhole;
        answer_.fields["same"] = false;
        answer_.text += Fill({"{0}, {1}", "{0}, {1}"}, {name_, text}).In(language_) + "\n";
        ordered_json fields = {
            {"column", name_},   {"what", nullptr},      {"reason", text.In(language_)}, {"bytesA", nullptr},
            {"bytesB", nullptr}, {"different", nullptr}, {"firstDifferent", nullptr}};
        if (!what.empty()) fields["what"] = what;
        answer_.fields["differences"].push_back(std::move(fields));
    }

    Language language_;
    Answer& answer_;
    std::string name_;
};

void RunDiff(const Console& console, Answer& answer) {
    Difference difference(console.language, answer);
    if (console.options.Argument(0) == kStandardStream && console.options.Argument(1) == kStandardStream) {
        throw Failure(kWrongUsage,
                      Phrase{"A e B non possono essere entrambi '-'", "A and B can't both be '-'"});
    }
    const ProgrammeTexts a = ReadProgrammeTexts(console, console.options.Argument(0)).texts;
    const ProgrammeTexts b = ReadProgrammeTexts(console, console.options.Argument(1)).texts;
    for (std::size_t c = 0; c < kColumns; ++c)
        difference.Compare(c, a.at(c), b.at(c));
}

}  // namespace

constinit const CommandEntry kConvertCommand{
    "convert",
    {"Fa di un file di programmazione un JSON, e di questo un file di programmazione",
     "Make JSON of a programme file, and of that a programme file"},
    kConvertArguments,
    kConvertOptions,
    kConvertExamples,
    RunConvert};
constinit const CommandEntry kDiffCommand{"diff",
                                          {"Confronta due programmi, colonna per colonna e lista per lista",
                                           "Compare two programmes, by column and list"},
                                          kDiffArguments,
                                          {},
                                          {},
                                          RunDiff};

}  // namespace vento::console
