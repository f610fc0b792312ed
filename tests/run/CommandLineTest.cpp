#include "run/CommandLine.h"
#include "run/RunState.h"

#include <gtest/gtest.h>

namespace {

QStringList Split(const QString& text)
{
    QStringList tokens;
    SplitCommandLine(text, tokens);
    return tokens;
}

struct SplitRow
{
    const char* text;
    std::vector<const char*> tokens;
};

class SplitCommandLineTest : public ::testing::TestWithParam<SplitRow>
{
};

TEST_P(SplitCommandLineTest, GivesTheTokensOfTheRawText)
{
    const SplitRow& row = GetParam();
    QStringList expected;
    for (const char* token : row.tokens)
        expected.append(QString::fromUtf8(token));
    EXPECT_EQ(Split(QString::fromUtf8(row.text)), expected) << row.text;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SplitCommandLineTest,
    ::testing::Values(SplitRow{"", {}}, SplitRow{"    ", {}},
                      SplitRow{R"(/c "C:\My Files\a.pdf" "C:\Out\b.doc")",
                               {"/c", R"(C:\My Files\a.pdf)", R"(C:\Out\b.doc)"}},
                      SplitRow{R"(/c "C:\My Files\a.pdf)", {"/c", R"(C:\My Files\a.pdf)"}},
                      SplitRow{R"("a b"c)", {"a b", "c"}},
                      SplitRow{R"(ab"c d")", {R"(ab"c)", R"(d")"}}, SplitRow{R"("")", {""}},
                      SplitRow{R"(/m "" "x.doc")", {"/m", "", "x.doc"}},
                      SplitRow{"a    b   ", {"a", "b"}}, SplitRow{"   a", {"a"}},
                      SplitRow{"a\tb", {"a\tb"}}, SplitRow{R"("a "  "b")", {"a ", "b"}},
                      SplitRow{R"("unterminated   with blanks  )",
                               {"unterminated   with blanks  "}},
                      SplitRow{"日本語 \"ファイル 名.pdf\"", {"日本語", "ファイル 名.pdf"}}));

TEST(SplitCommandLine, ClosingQuoteBeyondThe16BitLimitEndsTheSplit)
{
    const QString longToken = QString(32766, u'x');
    // A closing quote at position 32,767 is still in range.
    EXPECT_EQ(Split(QStringLiteral("\"") + longToken.left(32765) + QStringLiteral("\" z")).size(),
              2);
    // One further and the position overflows: nothing from there on becomes a token.
    const QStringList tokens = Split(QStringLiteral("a \"") + longToken + QStringLiteral("\" z"));
    EXPECT_EQ(tokens, QStringList{QStringLiteral("a")});
}

struct ParseRow
{
    const char* text;
    qint32 runMode;
    qint16 hosted;
    const char* source;
    const char* output;
    const char* hint;
};

class ParseCommandLineTest : public ::testing::TestWithParam<ParseRow>
{
};

TEST_P(ParseCommandLineTest, SetsTheRunFields)
{
    const ParseRow& row = GetParam();
    RunState state;
    ParseCommandLine(QString::fromUtf8(row.text), state);
    EXPECT_EQ(state.RunMode, row.runMode) << row.text;
    EXPECT_EQ(state.HostedByWord, row.hosted) << row.text;
    EXPECT_EQ(state.SourcePath.toStdString(), row.source) << row.text;
    EXPECT_EQ(state.OutputPath.toStdString(), row.output) << row.text;
    EXPECT_EQ(state.WordWindowHint.toStdString(), row.hint) << row.text;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ParseCommandLineTest,
    ::testing::Values(
        ParseRow{"", 0, 0, "", "", ""}, ParseRow{"/home/a/report.pdf", 0, 0, "", "", ""},
        ParseRow{"/o", 2, 0, "", "", ""}, ParseRow{"/o a.pdf b.doc", 2, 0, "", "", ""},
        ParseRow{"/O", 0, 0, "", "", ""}, ParseRow{"/C a.pdf", 0, 0, "", "", ""},
        ParseRow{"/c", 1, 0, "", "", ""}, ParseRow{"/c a.pdf", 1, 0, "a.pdf", "", ""},
        ParseRow{"/c a.PDF", 1, 0, "a.PDF", "", ""}, ParseRow{"/c a.pdf.txt", 1, 0, "", "", ""},
        ParseRow{"/c apdf", 1, 0, "", "", ""},
        ParseRow{"/c a.txt out.doc", 1, 0, "", "out.doc", ""},
        ParseRow{"/c \"/my files/a.pdf\" \"/out dir/b.doc\" ignored", 1, 0, "/my files/a.pdf",
                 "/out dir/b.doc", ""},
        ParseRow{"/m", 1, -1, "", "", ""}, ParseRow{"/m a.txt", 1, -1, "a.txt", "", ""},
        ParseRow{"/m a.pdf b.doc", 1, -1, "a.pdf", "b.doc", ""},
        ParseRow{"/m a.pdf b.doc \"Document 1\" extra", 1, -1, "a.pdf", "b.doc", "Document 1"},
        ParseRow{"/m \"\" \"x.doc\"", 1, -1, "", "x.doc", ""},
        ParseRow{"\"C:\\Program Files\\x\\marvash.exe\" /c a.pdf", 1, 0, "a.pdf", "", ""},
        ParseRow{"MARVASH.EXE /c a.pdf", 0, 0, "", "", ""},
        ParseRow{"marvash.exe marvash.exe /c a.pdf", 0, 0, "", "", ""},
        ParseRow{"/c -rf.pdf", 1, 0, "-rf.pdf", "", ""},
        ParseRow{"/c \"$(touch x); y.pdf\"", 1, 0, "$(touch x); y.pdf", "", ""}));

TEST(ParseCommandLine, KeepsPathsWhenThereIsNoSwitchAndResetsTheMode)
{
    RunState state;
    state.SourcePath = QStringLiteral("kept.pdf");
    state.OutputPath = QStringLiteral("kept.doc");
    state.RunMode = 2;
    state.HostedByWord = -1;
    state.WordWindowHint = QStringLiteral("old");
    ParseCommandLine(QStringLiteral("nothing"), state);
    EXPECT_EQ(state.RunMode, 0);
    EXPECT_EQ(state.HostedByWord, 0);
    EXPECT_TRUE(state.WordWindowHint.isEmpty());
    EXPECT_EQ(state.SourcePath, QStringLiteral("kept.pdf"));
    EXPECT_EQ(state.OutputPath, QStringLiteral("kept.doc"));
}

struct ExtensionRow
{
    const char* path;
    const char* extension;
    qint16 expected;
};

class HasExtensionTest : public ::testing::TestWithParam<ExtensionRow>
{
};

TEST_P(HasExtensionTest, TellsWhetherThePathEndsInTheExtension)
{
    const ExtensionRow& row = GetParam();
    EXPECT_EQ(HasExtension(QString::fromUtf8(row.path), QString::fromUtf8(row.extension)),
              row.expected)
        << row.path << " " << row.extension;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HasExtensionTest,
    ::testing::Values(ExtensionRow{"", ".pdf", 0}, ExtensionRow{"a.pdf", ".pdf", -1},
                      ExtensionRow{"A.PdF", ".pdf", -1}, ExtensionRow{"a.pdf.txt", ".pdf", 0},
                      ExtensionRow{"apdf", ".pdf", 0}, ExtensionRow{".pdf", ".pdf", -1},
                      ExtensionRow{R"(C:\a.b\c)", ".", 0}, ExtensionRow{R"(C:\a.b\c.d)", ".", -1},
                      ExtensionRow{"c.", ".", -1}, ExtensionRow{"/a.b/c", ".", 0},
                      ExtensionRow{"/a.b/c.d", ".", -1}, ExtensionRow{"plain", ".", 0}));

TEST(RebuildCommandText, EachArgumentIsOneTokenAgain)
{
    const QStringList arguments{QStringLiteral("/m"), QString(), QStringLiteral("/out/My File.doc"),
                                QStringLiteral("tab\there"), QStringLiteral("日本 語.pdf")};
    QStringList tokens;
    SplitCommandLine(RebuildCommandText(arguments), tokens);
    EXPECT_EQ(tokens, arguments);
}

}  // namespace
