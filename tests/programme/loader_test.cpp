#include "programme/loader.h"

#include <gtest/gtest.h>

#include "support/fakes.h"

namespace vento {
namespace {

using Reason = LoadProblem::Reason;
using Views = std::array<ListView, kColumns>;

struct Panel {
    Views labels;
    Views listsA;
    Views listsB;
    Label path;
    Button programButton{false, true};
    test::FakeFiles files;

    LoadResult Load(const std::string& file) {
        return Aprifilevento(file, files, {labels, listsA, listsB, path, programButton});
    }

    // The items of the views: "-" for a view without any, columns joined by '|'.
    [[nodiscard]] std::string Shown() const {
        std::string shown;
        for (const Views* views : {&labels, &listsA, &listsB}) {
            for (const ListView& view : *views) {
                shown += (view.Items().empty() ? "-" : view.Items().front()) + "|";
                EXPECT_LE(view.Items().size(), 1U);
            }
        }
        return shown;
    }
};

const std::string kExample =
    "1;A 1;11;x;y\n1;A 1;12;x;y\n2;B 2;21;x;y\n2;B 2;22;x;y\n3;C 3;31;x;y\n3;C 3;32;x;y\n";

TEST(Loader, FillsTheViewsUpToAFault) {
    struct Case {
        const char* name;
        std::string text;
        std::string shown;  // labels, lists A, lists B
        std::optional<Reason> reason{};
        std::size_t line = 0;
        std::size_t field = 0;
    };
    const std::string nothing = "-|-|-|-|-|-|-|-|-|";
    std::string mostLines;
    for (int i = 0; i < 32766; ++i)
        mostLines += "1;a;1;;\n";
    mostLines += "2;b;2;;\n";
    const std::vector<Case> cases{
        {"complete", kExample, "A 1|B 2|C 3|11|21|31|12|22|32|"},
        {"lines that end as on Windows", "1;a;1;x;y\r\n3;b;2;x;y\r\n", "a|-|b|1|-|2|2|-||"},
        {"without a final line feed the last line is lost", kExample.substr(0, kExample.size() - 1),
         "A 1|B 2|C 3|11|21|31|12|22||"},
        {"a later line of a column does not count", "3;c;1;;\n3;d;2;;\n1;a;3;;\n3;e;4;;\n",
         "a|-|c|3|-|1|4|-|2|"},
        {"the line below is list B whatever its number", "2;b;1;;\n3;c;2;;\n", "-|b|c|-|1|2|-|2||"},
        {"numbers with blanks and leading zeros", " 01 ;a;1;;\n  000000000003;c;2;;\n", "a|-|c|1|-|2|2|-||"},
        {"blanks, a bad list and further fields stay", "1; a ; x,300, ;;;more;\n",
         " a |-|-| x,300, |-|-||-|-|"},
        {"Windows-1252", "1;\x80 Citt\xE0;1;\x9C;\n", "€ Città|-|-|1|-|-||-|-|"},
        {"as many lines as there may be", mostLines, "a|b|-|1|2|-|1||-|"},
        {"empty file", "", nothing, Reason::empty},
        {"too many lines", std::string(32768, '\n'), nothing, Reason::tooManyLines},
        {"three fields", "1;a;1;;\n2;b;2\n", nothing, Reason::missingField, 2, 3},
        {"an empty line at the end", "1;a;1;;\n\n", nothing, Reason::missingField, 2, 1},
        {"number 4", "3;c;1;;\n2;b;2;;\n4;x;3;;\n1;a;4;;\n", "-|-|-|-|2|1|-|-|-|", Reason::badColumn, 3},
        {"not a number", "1;a;1;;\n+2;b;2;;\n", "-|-|-|1|-|-|-|-|-|", Reason::badColumn, 2},
        {"four fields", "1;a;1;;\n2;b;2;\n", "-|-|-|1|2|-|-|-|-|", Reason::missingField, 2, 4},
        {"bad number, field missing above", "1;a;1;\nx;b;2;;\n", "-|-|-|1|-|-|-|-|-|", Reason::badColumn, 2},
    };
    for (const bool loadedBefore : {false, true}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            Panel panel;
            panel.files.contents = {{"before", kExample}, {"file.qlb", c.text}};
            if (loadedBefore) static_cast<void>(panel.Load("before"));
            const LoadResult load = panel.Load("file.qlb");
            EXPECT_EQ(panel.Shown(), c.shown);
            EXPECT_EQ(panel.programButton.Visible(), loadedBefore || !c.reason);
            EXPECT_EQ(panel.path.Caption(), "file.qlb");
            ASSERT_EQ(load.problem.has_value(), c.reason.has_value());
            if (!c.reason) continue;
            EXPECT_EQ(load.problem->reason, *c.reason);
            EXPECT_EQ(std::pair(load.problem->line, load.problem->field), std::pair(c.line, c.field));
        }
    }
}

TEST(Loader, LeavesTheViewsAloneForAFileThatCannotBeOpened) {
    Panel panel;
    panel.files.contents["before"] = kExample;
    static_cast<void>(panel.Load("before"));
    const LoadResult gone = panel.Load("gone.qlb");
    ASSERT_TRUE(gone.problem);
    EXPECT_EQ(gone.problem->reason, Reason::cannotOpen);
    EXPECT_EQ(panel.path.Caption(), "gone.qlb");
    EXPECT_EQ(panel.Shown(), "A 1|B 2|C 3|11|21|31|12|22|32|");
}

}  // namespace
}  // namespace vento
