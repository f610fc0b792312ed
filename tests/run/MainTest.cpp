#include "run/Main.h"
#include "run/RunState.h"
#include "services/Help.h"

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

}  // namespace
