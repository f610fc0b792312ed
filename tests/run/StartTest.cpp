#include "TestPaths.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Starts the built program with a private configuration home and no display at all: a start
// without work must end at once, silently, and never reach the window system or the store.
struct StartRow
{
    std::vector<const char*> arguments;
};

class NoWorkStartTest : public ::testing::TestWithParam<StartRow>
{
};

TEST_P(NoWorkStartTest, EndsSilentlyWithoutTouchingTheStore)
{
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));

    QStringList arguments;
    for (const char* argument : GetParam().arguments)
        arguments.append(QString::fromUtf8(argument));
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(VELMORA_APP_DIR "/marvash"), arguments);
    ASSERT_TRUE(program.waitForStarted(10000));
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(program.waitForFinished(10000));
    EXPECT_LT(clock.elapsed(), 5000);
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_TRUE(program.readAllStandardOutput().isEmpty());
    EXPECT_TRUE(program.readAllStandardError().isEmpty());
    EXPECT_FALSE(QDir(home.filePath(QStringLiteral("config"))).exists()) << "the store was touched";
}

INSTANTIATE_TEST_SUITE_P(Rows, NoWorkStartTest,
                         ::testing::Values(StartRow{{}}, StartRow{{"/home/user/report.pdf"}},
                                           StartRow{{"/O"}}, StartRow{{"/C", "a.pdf"}},
                                           StartRow{{"/m"}}, StartRow{{"/m", "a.pdf"}},
                                           StartRow{{"/m", "", ""}}, StartRow{{"/m", "a.pdf", ""}},
                                           StartRow{{"-rf", "/"}}));

}  // namespace
