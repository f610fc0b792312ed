#include "conversion/OutputNaming.h"
#include "run/RunState.h"

#include <gtest/gtest.h>

namespace {

TEST(DeriveOutputPath, FollowsTheFormatAndKeepsTheFolderAndStemOfTheTargetOrTheSource)
{
    const std::tuple<const char*, const char*, qint16, const char*, qint16> rows[] = {
        // source, target, format, the target derived and the format after
        {"/in/my.report.pdf", "", 1, "/in/my.report.doc", 1},
        {"/in.dir/report", "", 2, "/in.dir/report.rtf", 2},
        {"C:\\in.dir\\report", "", 1, "C:\\in.dir\\report.doc", 1},
        {"/in/report.pdf", "/out/x.txt", 2, "/out/x.rtf", 2},
        {"", "/out/x.", 1, "/out/x.doc", 1},
        {"/in/a.pdf", "", 3, "/in/a.rtf", 2},
        {"/in/Bericht über 日本.PDF", "", 1, "/in/Bericht über 日本.doc", 1},
        {"", "", 1, ".doc", 1},
    };
    for (const auto& [source, target, format, expected, formatAfter] : rows) {
        RunState state;
        state.SourcePath = QString::fromUtf8(source);
        state.OutputPath = QString::fromUtf8(target);
        state.DocumentFormat = format;
        DeriveOutputPath(state);
        DeriveOutputPath(state);  // a second call changes nothing
        EXPECT_EQ(state.OutputPath.toStdString(), expected);
        EXPECT_EQ(state.DocumentFormat, formatAfter);
    }
    // The last dot's position is counted in 16 bits: past that the name is left alone.
    const QString longName = QString(40000, u'a') + QStringLiteral(".txt");
    RunState state;
    state.OutputPath = longName;
    state.DocumentFormat = 1;
    DeriveOutputPath(state);
    EXPECT_EQ(state.OutputPath, longName);
    EXPECT_EQ(WithFormatExtension(longName, 1), longName);
}

}  // namespace
