#include "console/warnings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

#include "programme/fields.h"
#include "protocol/commands.h"

namespace vento::console {
namespace {

constexpr std::size_t kMostListBytes = 32767;  // of the lists that one run sends
constexpr std::size_t kUsualSection = 4096;    // words between the sections of a usual remote
constexpr std::array<std::string_view, 3> kByteOrderMarks{"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"};

std::string_view RecordIn(const ListView& view) {
    return TrimBlanks(view.FirstItem());
}

// The column that a line names; nothing if it names none.
std::optional<std::size_t> ColumnOf(std::string_view line) {
    const auto number = ParseDecimal(line.substr(0, line.find(';')), kColumns);
    if (!number || *number == 0) return std::nullopt;
    return *number - 1U;
}

std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    for (auto end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    if (!text.empty()) lines.push_back(text);  // never read as one
    return lines;
}

// Whether there are characters beyond ASCII and all of them are well-formed UTF-8.
bool LooksLikeUtf8(std::string_view text) {
    bool beyondAscii = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<std::uint8_t>(text[i]);
        if (lead < 0x80) continue;
        const int more = lead >= 0xC2 && lead < 0xE0   ? 1
                         : lead >= 0xE0 && lead < 0xF0 ? 2
                         : lead >= 0xF0 && lead < 0xF5 ? 3
                                                       : 0;
        if (more == 0) return false;
        for (int left = more; left > 0; --left) {
            if (++i >= text.size() || (static_cast<std::uint8_t>(text[i]) & 0xC0U) != 0x80U) return false;
        }
        beyondAscii = true;
    }
    return beyondAscii;
}

class Search {
  public:
    Search(std::string_view text, const FormWeb& form, const LoadResult& load)
        : text_(text), lines_(SplitLines(text)), form_(form), load_(load) {}

    std::vector<Warning> Find() {
        Encoding();
        if (!load_.problem) {
            LastLine();
            for (std::size_t line = 1; line <= lines_.size(); ++line)
                Use(line);
            for (std::size_t column = 0; column < kColumns; ++column)
                Column(column);
            Total("A", form_.ListView2);
            Total("B", form_.ListView3);
        }
        std::ranges::stable_sort(warnings_, {}, &Warning::line);
        return std::move(warnings_);
    }

  private:
    void Warn(std::size_t line, const Phrase& pattern, std::initializer_list<Sentence> values = {}) {
        warnings_.push_back({line, Fill(pattern, values)});
    }

    void Encoding() {
        const bool marked = std::ranges::any_of(
            kByteOrderMarks, [&](std::string_view mark) { return text_.starts_with(mark); });
        if (marked || text_.find('\0') != std::string_view::npos) {
            Warn(0, {"il file è in Unicode: salvarlo in Windows-1252 (ANSI), senza byte order mark.",
                     "the file is Unicode: save it as Windows-1252 (ANSI), without a byte order mark."});
        } else if (LooksLikeUtf8(text_)) {
            Warn(0, {"il file sembra UTF-8, e le lettere accentate appariranno sbagliate: salvarlo in "
                     "Windows-1252 (ANSI).",
                     "the file looks like UTF-8, and its accented letters will come out wrong: save it as "
                     "Windows-1252 (ANSI)."});
        }
        for (std::size_t at = text_.find('\r'); at != std::string_view::npos; at = text_.find('\r', at + 1)) {
            if (at + 1 < text_.size() && text_[at + 1] == '\n') continue;
            Warn(1 + static_cast<std::size_t>(std::ranges::count(text_.substr(0, at), '\n')),
                 {"un ritorno a capo (CR) da solo non separa le righe: serve un line feed.",
                  "a carriage return alone does not part lines: a line feed does."});
            return;
        }
    }

    // The text behind the last line feed is never read.
    void LastLine() {
        if (text_.empty() || text_.ends_with('\n')) return;
        const std::size_t line = lines_.size();
        Sentence lost;
        if (const auto column = ColumnOf(lines_.back()); column && load_.lines[*column].listA == 0)
            lost += Fill({" Si perde la colonna {0}.", " Column {0} is lost."}, {kSections[*column].name});
        for (std::size_t column = 0; column < kColumns; ++column) {
            if (load_.lines[column].listA == 0 || load_.lines[column].listA + 1 != line) continue;
            lost += Fill({" Si perde la lista B della colonna {0}.", " List B of column {0} is lost."},
                         {kSections[column].name});
        }
        Warn(line,
             {"non finisce con un line feed, e non viene letta.{0}",
              "has no line feed at its end and is not read.{0}"},
             {lost});
    }

    void Use(std::size_t line) {
        const bool read = line < lines_.size() || text_.ends_with('\n');
        const auto own = ColumnOf(lines_[line - 1]);
        if (!read || !own) return;
        bool used = load_.lines[*own].listA == line;
        for (std::size_t column = 0; column < kColumns; ++column) {
            if (load_.lines[column].listB != line) continue;
            used = true;
            if (column != *own) {
                Warn(line,
                     {"è della colonna {0}, ma vale come lista B della colonna {1}, perché sta sotto la sua "
                      "prima riga.",
                      "is of column {0} but taken as list B of column {1}, since it stands below its first "
                      "line."},
                     {kSections[*own].name, kSections[column].name});
            }
        }
        if (!used) {
            Warn(line,
                 {"non ha effetto: la colonna {0} compare già sopra.",
                  "has no effect: column {0} stands above already."},
                 {kSections[*own].name});
        }
        std::string_view list = lines_[line - 1];
        for (int field = 0; field < 2; ++field)
            list.remove_prefix(std::min(list.find(';') + 1, list.size()));
        if (list.substr(0, list.find(';')).find('\t') != std::string_view::npos)
            Warn(line, {"c'è un TAB nella lista di codici.", "there is a TAB in the code list."});
    }

    void Column(std::size_t column) {
        const ColumnLines& lines = load_.lines[column];
        if (lines.listA == 0) return;
        if (RecordIn(form_.ListView1[column]).empty()) {
            Warn(lines.listA,
                 {"l'etichetta è vuota, e la colonna {0} non sarà programmata.",
                  "the label is blank, and column {0} will not be programmed."},
                 {kSections[column].name});
        }
        List(column, "A", lines.listA, RecordIn(form_.ListView2[column]));
        List(column, "B", lines.listB != 0 ? lines.listB : lines.listA, RecordIn(form_.ListView3[column]));
    }

    void List(std::size_t column, const char* letter, std::size_t line, std::string_view list) {
        if (list.empty()) {
            Warn(line,
                 {"la colonna {0} non ha una lista {1}: i telecomandi che la richiedono non si possono "
                  "programmare.",
                  "column {0} has no list {1}: remotes that take it can't be programmed."},
                 {kSections[column].name, letter});
        } else if (Bytes(list) > kUsualSection) {
            Warn(line,
                 {"la lista {1} della colonna {0} ha {2} byte, più dei 4096 di una sezione usuale: può "
                  "coprire la sezione seguente.",
                  "list {1} of column {0} has {2} bytes, more than the 4096 of a usual section: it may run "
                  "into the next one."},
                 {kSections[column].name, letter, std::to_string(Bytes(list))});
        }
    }

    void Total(const char* letter, const std::array<ListView, kColumns>& views) {
        std::size_t total = 0;
        for (std::size_t column = 0; column < kColumns; ++column) {
            const std::string_view list = RecordIn(views[column]);
            if (!list.empty() && !RecordIn(form_.ListView1[column]).empty()) total += Bytes(list);
        }
        if (total <= kMostListBytes) return;
        Warn(0,
             {"le liste {0} hanno insieme {1} byte; se ne possono inviare al massimo 32767.",
              "the lists {0} have {1} bytes together; 32767 is the most that can be sent."},
             {letter, std::to_string(total)});
    }

    static std::size_t Bytes(std::string_view list) {
        return 1 + static_cast<std::size_t>(std::ranges::count(list, ','));
    }

    std::string_view text_;
    std::vector<std::string_view> lines_;
    const FormWeb& form_;
    const LoadResult& load_;
    std::vector<Warning> warnings_;
};

}  // namespace

std::vector<Warning> FindWarnings(std::string_view text, const FormWeb& form, const LoadResult& load) {
    return Search(text, form, load).Find();
}

}  // namespace vento::console
