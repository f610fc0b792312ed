#include "run/Main.h"
#include "run/CommandLine.h"
#include "run/RunState.h"
#include "services/Help.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QStringList Tokens(const QString& text)
{
    QStringList tokens;
    SplitCommandLine(text, tokens);
    return tokens;
}

TEST(PrepareRun, DecidesWhetherThereIsWorkAndSetsTheHelpFileBesideTheProgram)
{
    const std::pair<const char*, bool> rows[] = {{"", false},
                                                 {"/home/a/report.pdf", false},
                                                 {"/m a.pdf", false},
                                                 {"/m a.pdf \"\"", false},
                                                 {"/m a.pdf b.doc", true},
                                                 {"/c a.txt", true},
                                                 {"/o whatever", true}};
    for (const auto& [commandText, work] : rows) {
        RunState state;
        state.PageCount = 9;
        SetApplicationHelpFile(QString());
        EXPECT_EQ(PrepareRun(state, Tokens(QString::fromUtf8(commandText)), "/opt/app"), work)
            << commandText;
        EXPECT_EQ(state.PageCount, 0);
        EXPECT_TRUE(!work || ApplicationHelpFileProperty().startsWith("/opt/app/")) << commandText;
    }
}

TEST(PrepareRun, PathsAreReadAgainstTheCallersWorkingDirectory)
{
    QTemporaryDir caller;
    const QString folder = caller.filePath(QStringLiteral("my docs"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString before = QDir::currentPath();
    QDir::setCurrent(folder);
    RunState state;
    PrepareRun(state, Tokens(QStringLiteral("/c report.pdf \"../out dir/r.doc\"")), "/opt/app");
    RunState hosted;
    PrepareRun(hosted, Tokens(QStringLiteral("/m /abs/a.pdf b.doc")), "/opt/app");
    QDir::setCurrent(before);

    EXPECT_EQ(state.SourcePath, folder + QStringLiteral("/report.pdf"));
    EXPECT_EQ(QDir::cleanPath(state.OutputPath), caller.filePath(QStringLiteral("out dir/r.doc")));
    EXPECT_EQ(hosted.SourcePath, QStringLiteral("/abs/a.pdf"));
    EXPECT_EQ(hosted.OutputPath, folder + QStringLiteral("/b.doc"));
}

}  // namespace
