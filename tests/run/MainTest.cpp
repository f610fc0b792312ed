#include "run/Main.h"
#include "run/RunState.h"
#include "services/Help.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct StartRow
{
    const char* commandText;
    bool work;
};

class PrepareRunTest : public ::testing::TestWithParam<StartRow>
{
};

TEST_P(PrepareRunTest, DecidesWhetherThereIsWork)
{
    const StartRow& row = GetParam();
    RunState state;
    state.PageCount = 9;
    EXPECT_EQ(PrepareRun(state, QString::fromUtf8(row.commandText), QStringLiteral("/opt/app")),
              row.work)
        << row.commandText;
    EXPECT_EQ(state.PageCount, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PrepareRunTest,
    ::testing::Values(StartRow{"", false}, StartRow{"/home/a/report.pdf", false},
                      StartRow{"/m", false}, StartRow{"/m a.pdf", false},
                      StartRow{"/m \"\" \"\"", false}, StartRow{"/m a.pdf \"\"", false},
                      StartRow{"/m a.pdf b.doc", true}, StartRow{"/c", true},
                      StartRow{"/c a.txt", true}, StartRow{"/o whatever", true}));

TEST(PrepareRun, SetsTheHelpFileBesideTheProgram)
{
    RunState state;
    PrepareRun(state, QStringLiteral("/o"), QStringLiteral("/opt/app"));
    EXPECT_TRUE(ApplicationHelpFileProperty().startsWith(QStringLiteral("/opt/app/")));
}

TEST(PrepareRun, PathsAreReadAgainstTheCallersWorkingDirectory)
{
    QTemporaryDir caller;
    ASSERT_TRUE(caller.isValid());
    const QString folder = caller.filePath(QStringLiteral("my docs"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString before = QDir::currentPath();
    QDir::setCurrent(folder);
    RunState state;
    PrepareRun(state, QStringLiteral("/c report.pdf \"../out dir/r.doc\""),
               QStringLiteral("/opt/app"));
    RunState hosted;
    PrepareRun(hosted, QStringLiteral("/m /abs/a.pdf b.doc"), QStringLiteral("/opt/app"));
    QDir::setCurrent(before);

    EXPECT_EQ(state.SourcePath, folder + QStringLiteral("/report.pdf"));
    EXPECT_EQ(QDir::cleanPath(state.OutputPath), caller.filePath(QStringLiteral("out dir/r.doc")));
    EXPECT_EQ(hosted.SourcePath, QStringLiteral("/abs/a.pdf"));
    EXPECT_EQ(hosted.OutputPath, folder + QStringLiteral("/b.doc"));
}

}  // namespace
