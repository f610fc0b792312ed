#include "conversion/OutputNaming.h"
#include "run/RunState.h"

#include <gtest/gtest.h>

namespace {

struct NamingRow
{
    const char* source;
    const char* output;
    qint16 format;
    const char* expected;
    qint16 formatAfter;
};

class DeriveOutputPathTest : public ::testing::TestWithParam<NamingRow>
{
};

TEST_P(DeriveOutputPathTest, FollowsFormatAndKeepsDirectoryAndStem)
{
    const NamingRow& row = GetParam();
    RunState state;
    state.SourcePath = QString::fromUtf8(row.source);
    state.OutputPath = QString::fromUtf8(row.output);
    state.DocumentFormat = row.format;
    DeriveOutputPath(state);
    EXPECT_EQ(state.OutputPath.toStdString(), row.expected);
    EXPECT_EQ(state.DocumentFormat, row.formatAfter);

    // A second call changes nothing.
    DeriveOutputPath(state);
    EXPECT_EQ(state.OutputPath.toStdString(), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DeriveOutputPathTest,
    ::testing::Values(NamingRow{"/in/report.pdf", "", 1, "/in/report.doc", 1},
                      NamingRow{"/in/report.pdf", "", 2, "/in/report.rtf", 2},
                      NamingRow{"/in/my.report.pdf", "", 1, "/in/my.report.doc", 1},
                      NamingRow{"/in.dir/report", "", 1, "/in.dir/report.doc", 1},
                      NamingRow{"C:\\in.dir\\report", "", 1, "C:\\in.dir\\report.doc", 1},
                      NamingRow{"/in/report.pdf", "/out/x.txt", 2, "/out/x.rtf", 2},
                      NamingRow{"", "/out/x.", 1, "/out/x.doc", 1},
                      NamingRow{"/in/a.pdf", "", 0, "/in/a.rtf", 2},
                      NamingRow{"/in/a.pdf", "", 3, "/in/a.rtf", 2},
                      NamingRow{"/in/Bericht über 日本.PDF", "", 1, "/in/Bericht über 日本.doc", 1},
                      NamingRow{"", "", 1, ".doc", 1}));

TEST(DeriveOutputPath, PathWhoseLastDotLiesPastThe16BitLimitIsLeftAlone)
{
    RunState state;
    state.OutputPath = QString(40000, u'a') + QStringLiteral(".txt");
    state.DocumentFormat = 1;
    const QString before = state.OutputPath;
    DeriveOutputPath(state);
    EXPECT_EQ(state.OutputPath, before);
}

}  // namespace
