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

TEST(SplitCommandLine, AQuoteCountsOnlyAtTheStartOfATokenAndOnlyBlanksSeparate)
{
    const std::pair<const char*, QStringList> rows[] = {
        {"    ", {}},
        {R"(/c "/My Files/a.pdf" "/Out/b.doc")", {"/c", "/My Files/a.pdf", "/Out/b.doc"}},
        {R"(/c "/My Files/a.pdf)", {"/c", "/My Files/a.pdf"}},
        {R"("a b"c)", {"a b", "c"}},
        {R"(ab"c d")", {R"(ab"c)", R"(d")"}},
        {R"(/m "" "x.doc")", {"/m", "", "x.doc"}},
        {"   a    b\tc   ", {"a", "b\tc"}},
        {"日本語 \"ファイル 名.pdf\"", {"日本語", "ファイル 名.pdf"}}};
    for (const auto& [text, tokens] : rows)
        EXPECT_EQ(Split(QString::fromUtf8(text)), tokens) << text;
    // The closing quote's position is a 16-bit number: one further out ends the split.
    const QString token(32765, u'x');
    EXPECT_EQ(Split(u'"' + token + QStringLiteral("\" z")).size(), 2);
    EXPECT_EQ(Split(QStringLiteral("a \"x") + token + QStringLiteral("\" z")), QStringList{"a"});
}

TEST(ParseCommandLine, SetsTheRunFieldsFromTheSwitch)
{
    // The command text, and the run's fields then: "mode hosted|source|output|window hint".
    const std::pair<const char*, const char*> rows[] = {
        {"/o a.pdf b.doc", "2 0|||"},
        {"/c a.PDF", "1 0|a.PDF||"},
        {"/c a.pdf.txt out.doc", "1 0||out.doc|"},
        {"/c \"/my files/a.pdf\" \"/out dir/b.doc\" more", "1 0|/my files/a.pdf|/out dir/b.doc|"},
        {"/m a.txt", "1 -1|a.txt||"},
        {"/m a.pdf b.doc \"Document 1\" more", "1 -1|a.pdf|b.doc|Document 1"},
        {"/m \"\" \"x.doc\"", "1 -1||x.doc|"},
        {"\"/opt/x/marvash.exe\" /c a.pdf", "1 0|a.pdf||"},
        {"MARVASH.EXE /c a.pdf", "0 0|||"},
        {"marvash.exe marvash.exe /c a.pdf", "0 0|||"},
        {"/c \"$(touch x); -rf.pdf\"", "1 0|$(touch x); -rf.pdf||"}};
    for (const auto& [text, expected] : rows) {
        RunState state;
        state.WordWindowHint = QStringLiteral("old");
        ParseCommandLine(QString::fromUtf8(text), state);
        EXPECT_EQ(QStringLiteral("%1 %2|%3|%4|%5")
                      .arg(state.RunMode)
                      .arg(state.HostedByWord)
                      .arg(state.SourcePath, state.OutputPath, state.WordWindowHint)
                      .toStdString(),
                  expected)
            << text;
    }
}

TEST(CommandTokens, EachArgumentIsOneTokenAgainWhateverItHolds)
{
    const QStringList rows[] = {
        {"/m", QString(), "/out/My File.doc", "tab\there", "日本 語.pdf"},
        // Quotes the text has no escape for: inside a name with blanks, or leading.
        {"/m", R"(a "b.pdf)", "out.doc"},
        {"/m", R"("lead.pdf)", R"(it's "q".pdf)"},
        {"/c", R"(q"x".pdf)"}};
    for (const QStringList& arguments : rows)
        EXPECT_EQ(CommandTokens(arguments), arguments) << arguments.join('|').toStdString();
    // Without a quote the tokeniser's limits stand: a quoted token closing past 32,767 ends it.
    const QStringList tooLong{"/c", "a" + QString(32767, u' ') + "b.pdf", "out.doc"};
    EXPECT_EQ(CommandTokens(tooLong), QStringList{"/c"});
}

}  // namespace
