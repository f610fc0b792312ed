#include "TestPaths.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// The built program, with a private configuration home and no display at all: a start without
// work must end by itself, silently, and never reach the window system or the store.
TEST(Start, WithoutWorkEndsSilentlyWithoutTouchingTheStore)
{
    const QStringList rows[] = {{},
                                {QStringLiteral("/O")},
                                {QStringLiteral("/m"), QStringLiteral("a.pdf"), QString()},
                                {QStringLiteral("-rf"), QStringLiteral("/")}};
    for (const QStringList& arguments : rows) {
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        QTemporaryDir home;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath("config"));
        environment.insert(QStringLiteral("HOME"), home.path());
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(VELMORA_APP_DIR "/marvash"), arguments);
        ASSERT_TRUE(program.waitForFinished(30000));
        EXPECT_TRUE(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0);
        EXPECT_EQ(program.readAll() + program.readAllStandardError(), QByteArray());
        EXPECT_FALSE(QDir(home.filePath("config")).exists()) << "the store was touched";
    }
}

}  // namespace
