#include "programme/loader.h"

#include <gtest/gtest.h>

#include <algorithm>

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

    LoadResult Load(const std::string& text) {
        files.contents["file.qlb"] = text;
        return Aprifilevento("file.qlb", files, {labels, listsA, listsB, path, programButton});
    }
};

// The views' items: "-" for a view without any, columns joined by '|'.
std::string Shown(const Views& views) {
    std::string shown;
    for (const ListView& view : views) {
        if (&view != &views.front()) shown += '|';
        shown += view.Items().empty() ? "-" : view.Items().front();
        EXPECT_LE(view.Items().size(), 1U);
    }
    return shown;
}

const std::string kExample =
    "1;Alfa 100;193,204,198,193,160,177,160,160,12,34;x;y\n"
    "1;Alfa 100;193,204,198,193,160,177,160,160,56,78;x;y\n"
    "2;Beta 200;194,197,212,193,160,178,160,160,3;x;y\n"
    "2;Beta 200;194,197,212,193,160,178,160,160,4;x;y\n"
    "3;Gamma 300;199,193,205,205,193,160,179,160,255;x;y\n"
    "3;Gamma 300;199,193,205,205,193,160,179,160,0;x;y\n";

TEST(Loader, FillsTheViews) {
    std::string windows = kExample;
    for (std::size_t at = 0; (at = windows.find('\n', at)) != std::string::npos; at += 2)
        windows.insert(at, 1, '\r');
    struct Case {
        const char* name;
        std::string text;
        std::string labels;
        std::string listsA;
        std::string listsB;
    };
    const std::vector<Case> cases{
        {"complete", kExample, "Alfa 100|Beta 200|Gamma 300",
         "193,204,198,193,160,177,160,160,12,34|194,197,212,193,160,178,160,160,3|"
         "199,193,205,205,193,160,179,160,255",
         "193,204,198,193,160,177,160,160,56,78|194,197,212,193,160,178,160,160,4|"
         "199,193,205,205,193,160,179,160,0"},
        {"without a final line feed the last line is lost", kExample.substr(0, kExample.size() - 1),
         "Alfa 100|Beta 200|Gamma 300",
         "193,204,198,193,160,177,160,160,12,34|194,197,212,193,160,178,160,160,3|"
         "199,193,205,205,193,160,179,160,255",
         "193,204,198,193,160,177,160,160,56,78|194,197,212,193,160,178,160,160,4|"},
        {"no line feed at all", "1;a;1;x;y", "-|-|-", "-|-|-", "-|-|-"},
        {"one line for each column", "1;a;11;;\n2;b;22;;\n3;c;33;;\n", "a|b|c", "11|22|33", "22|33|"},
        {"a later line of the same column does not count", "3;c;1;;\n3;d;2;;\n1;a;3;;\n3;e;4;;\n", "a|-|c",
         "3|-|1", "4|-|2"},
        {"the line below is list B whatever its number", "2;b;1;;\n3;c;2;;\n", "-|b|c", "-|1|2", "-|2|"},
        {"numbers with blanks and leading zeros", " 01 ;a;1;;\n  0000000000000000003;c;2;;\n", "a|-|c",
         "1|-|2", "2|-|"},
        {"blanks, a bad list and further fields are kept as they are", "1; a ; x,300, ;;;more;\n", " a |-|-",
         " x,300, |-|-", "|-|-"},
        {"Windows-1252", "1;\x80\x81 caff\xE8;1;;\n", "\u20AC\u0081 caff\u00E8|-|-", "1|-|-", "|-|-"},
    };
    for (const Case& c : cases) {
        Panel panel;
        EXPECT_FALSE(panel.Load(c.text).problem) << c.name;
        EXPECT_EQ(Shown(panel.labels), c.labels) << c.name;
        EXPECT_EQ(Shown(panel.listsA), c.listsA) << c.name;
        EXPECT_EQ(Shown(panel.listsB), c.listsB) << c.name;
        EXPECT_TRUE(panel.programButton.Visible()) << c.name;
        EXPECT_EQ(panel.path.Caption(), "file.qlb") << c.name;
    }
    Panel panel;
    EXPECT_FALSE(panel.Load(windows).problem);
    EXPECT_EQ(Shown(panel.labels), cases.front().labels);
    EXPECT_EQ(Shown(panel.listsB), cases.front().listsB);
}

TEST(Loader, StopsWhereItMeetsAFaultAndKeepsWhatItHas) {
    const std::string tooMany = [] {
        std::string text;
        for (int i = 0; i < 32768; ++i)
            text += "1;a;1;;\n";
        return text;
    }();
    struct Case {
        const char* name;
        std::string text;
        Reason reason;
        std::size_t line;
        std::size_t field;
        std::string labels;
        std::string listsA;
    };
    const std::vector<Case> cases{
        {"empty file", "", Reason::empty, 0, 0, "-|-|-", "-|-|-"},
        {"too many lines", tooMany, Reason::tooManyLines, 0, 0, "-|-|-", "-|-|-"},
        {"three fields", "1;a;1;;\n2;b;2\n", Reason::missingField, 2, 3, "-|-|-", "-|-|-"},
        {"an empty line at the end", "1;a;1;;\n\n", Reason::missingField, 2, 1, "-|-|-", "-|-|-"},
        {"bad number", "3;c;1;;\n2;b;2;;\n4;x;3;;\n1;a;4;;\n", Reason::badColumn, 3, 0, "-|-|-", "-|2|1"},
        {"number zero", "0;a;1;;\n", Reason::badColumn, 1, 0, "-|-|-", "-|-|-"},
        {"not a number", "1;a;1;;\n+2;b;2;;\n", Reason::badColumn, 2, 0, "-|-|-", "1|-|-"},
        {"tab is no blank", "\t1;a;1;;\n", Reason::badColumn, 1, 0, "-|-|-", "-|-|-"},
        {"four fields", "1;a;1;;\n2;b;2;\n", Reason::missingField, 2, 4, "-|-|-", "1|2|-"},
        {"a bad number counts before a missing last field", "1;a;1;\nx;b;2;;\n", Reason::badColumn, 2, 0,
         "-|-|-", "1|-|-"},
    };
    for (const bool loadedBefore : {false, true}) {
        for (const Case& c : cases) {
            Panel panel;
            if (loadedBefore) {
                EXPECT_FALSE(panel.Load(kExample).problem);
            }
            const LoadResult load = panel.Load(c.text);
            ASSERT_TRUE(load.problem) << c.name;
            EXPECT_EQ(load.problem->reason, c.reason) << c.name;
            EXPECT_EQ(load.problem->line, c.line) << c.name;
            EXPECT_EQ(load.problem->field, c.field) << c.name;
            EXPECT_EQ(Shown(panel.labels), c.labels) << c.name;
            EXPECT_EQ(Shown(panel.listsA), c.listsA) << c.name;
            EXPECT_EQ(Shown(panel.listsB), "-|-|-") << c.name;
            EXPECT_EQ(panel.programButton.Visible(), loadedBefore) << c.name;
        }
    }
}

TEST(Loader, AFileThatCannotBeOpenedChangesNothingButThePath) {
    Panel panel;
    EXPECT_FALSE(panel.Load(kExample).problem);
    const LoadResult load = Aprifilevento(
        "gone.qlb", panel.files, {panel.labels, panel.listsA, panel.listsB, panel.path, panel.programButton});
    ASSERT_TRUE(load.problem);
    EXPECT_EQ(load.problem->reason, Reason::cannotOpen);
    EXPECT_EQ(load.problem->systemReason, "No such file or directory");
    EXPECT_EQ(panel.path.Caption(), "gone.qlb");
    EXPECT_EQ(Shown(panel.labels), "Alfa 100|Beta 200|Gamma 300");
}

TEST(Loader, TakesTheMostLinesThereMayBeAndTellsWhereListsCameFrom) {
    std::string text;
    for (int i = 0; i < 32766; ++i)
        text += "1;a;1;;\n";
    text += "2;b;2;;\n";
    Panel panel;
    const LoadResult load = panel.Load(text);
    EXPECT_FALSE(load.problem);
    EXPECT_EQ(load.lines[0].listA, 1U);
    EXPECT_EQ(load.lines[0].listB, 2U);
    EXPECT_EQ(load.lines[1].listA, 32767U);
    EXPECT_EQ(load.lines[1].listB, 0U);
}

}  // namespace
}  // namespace vento
