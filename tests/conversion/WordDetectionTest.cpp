#include "conversion/WordDetection.h"
#include "platform/OfficeSuite.h"
#include "platform/ProcessUtilityLibrary.h"
#include "support/FakeServices.h"

#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Test names from the rows' own names.
template <class Row> std::string RowName(const ::testing::TestParamInfo<Row>& row)
{
    return row.param.name;
}

const QString Program = QStringLiteral("/opt/office/program/soffice.bin");

// The test's own working directory and an application directory that really exists, so that
// a change of directory shows.
class DetectionFixture
{
protected:
    DetectionFixture()
    {
        m_env.context.applicationDir = m_appDir.path();
        QDir::setCurrent(m_startDir.path());
    }

    QString StartDir() const { return QDir(m_startDir.path()).canonicalPath(); }
    QString AppDir() const { return QDir(m_appDir.path()).canonicalPath(); }

    QTemporaryDir m_startDir;
    QTemporaryDir m_appDir;
    FakeEnvironment m_env;
};

struct VersionRow
{
    qint32 fileVersion;
    qint32 expected;
};

class WordVersionMapping : public DetectionFixture, public ::testing::TestWithParam<VersionRow>
{
};

TEST_P(WordVersionMapping, ReadsTheProgramsVersionOnWordsScaleInTheApplicationDirectory)
{
    const VersionRow& row = GetParam();
    m_env.officeSuite.programPath = Program;
    m_env.processUtility.fileVersions.insert(Program, row.fileVersion);

    EXPECT_EQ(GetWordVersion(m_env.context), row.expected);

    ASSERT_EQ(m_env.processUtility.calls, QStringList{"GetFileVersion(" + Program + ")"});
    EXPECT_EQ(m_env.processUtility.workingDirectories, QStringList{AppDir()});
    EXPECT_EQ(m_env.officeSuite.findWorkingDirectories, QStringList{AppDir()});
    EXPECT_EQ(QDir::currentPath(), StartDir());
    EXPECT_TRUE(m_env.officeSuite.jobs.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WordVersionMapping,
    ::testing::Values(VersionRow{0x00070004, 0x00100004},  // 7.4: between 9.0 and 17.0
                      VersionRow{0x00070000, 0x00100000},
                      VersionRow{0x0007FFFF, 0x0010FFFF},  // the last one below 17.0
                      VersionRow{0x00080000, 0x00110000},  // 8.0 reaches 17.0 exactly
                      VersionRow{0x00030003, 0x000C0003},  // the first LibreOffice
                      VersionRow{0x00000001, 0x00090001},
                      VersionRow{0x00180002, 0x00210002},  // 24.2, numbered by year
                      VersionRow{0x7FF80005, 0x7FFF0005},  // too large: the largest major
                      VersionRow{0, 0},                    // version unreadable
                      VersionRow{-65536, 0}));             // nonsense from the library

struct AbsentRow
{
    const char* name;
    bool appDirExists;
};

class WordVersionAbsent : public DetectionFixture, public ::testing::TestWithParam<AbsentRow>
{
};

TEST_P(WordVersionAbsent, NoSuiteGivesZeroWithoutAskingTheLibraryAndKeepsTheDirectory)
{
    if (!GetParam().appDirExists)
        m_env.context.applicationDir = m_appDir.path() + QStringLiteral("/gone");
    m_env.processUtility.fileVersions.insert(QString(), 0x00070004);

    EXPECT_EQ(GetWordVersion(m_env.context), 0);

    EXPECT_TRUE(m_env.processUtility.calls.isEmpty());
    EXPECT_EQ(m_env.officeSuite.findWorkingDirectories.size(), 1);
    EXPECT_EQ(QDir::currentPath(), StartDir());
}

INSTANTIATE_TEST_SUITE_P(Rows, WordVersionAbsent,
                         ::testing::Values(AbsentRow{"AppDirPresent", true},
                                           AbsentRow{"AppDirMissing", false}),
                         RowName<WordVersionAbsent::ParamType>);

// An installation of the suite's shape, found through a launcher link on the program search
// path: the real lookup and the real process utility library read it.
class InstalledSuiteLookup : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_savedPath = qgetenv("PATH");
        const QDir root(m_root.path());
        ASSERT_TRUE(root.mkpath(QStringLiteral("office 7/program")));
        ASSERT_TRUE(root.mkpath(QStringLiteral("bin")));
        m_programDir = QDir(root.filePath(QStringLiteral("office 7/program"))).canonicalPath();
        WriteFile(m_programDir + QStringLiteral("/soffice"), "#!/bin/sh\n", true);
        ASSERT_TRUE(QFile::link(m_programDir + QStringLiteral("/soffice"),
                                root.filePath(QStringLiteral("bin/soffice"))));
        qputenv("PATH", QFile::encodeName(root.filePath(QStringLiteral("bin"))));
    }
    void TearDown() override { qputenv("PATH", m_savedPath); }

    static void WriteFile(const QString& path, const QByteArray& bytes, bool executable)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        if (executable)
            file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    }

    QTemporaryDir m_root;
    QString m_programDir;
    QByteArray m_savedPath;
};

TEST_F(InstalledSuiteLookup, FollowsTheLauncherLinkToTheProgramBesideIt)
{
    WriteFile(m_programDir + QStringLiteral("/soffice.bin"),
              "\x7f"
              "ELF",
              true);
    WriteFile(m_programDir + QStringLiteral("/bootstraprc"),
              "[Bootstrap]\nProductKey=LibreOffice 7.4\n", false);

    const auto launcher = CreateProcessLauncher();
    const auto suite = CreateLibreOffice(*launcher, QDir::tempPath());
    EXPECT_EQ(suite->FindProgram(), m_programDir + QStringLiteral("/soffice.bin"));

    FakeEnvironment env;
    const auto library = LoadProcessUtilityLibrary(QStringLiteral(VELMORA_APP_DIR));
    AppContext context{env.state,       env.store.Factory(), env.help,   *library, env.geometry,
                       VELMORA_APP_DIR, env.launcher,        env.opener, *suite,   env.clock};
    EXPECT_EQ(GetWordVersion(context), 0x00100004);
}

TEST_F(InstalledSuiteLookup, AProgramThatCantBeRunIsNoSuite)
{
    WriteFile(m_programDir + QStringLiteral("/soffice.bin"),
              "\x7f"
              "ELF",
              false);

    const auto launcher = CreateProcessLauncher();
    const QString found = CreateLibreOffice(*launcher, QDir::tempPath())->FindProgram();
    EXPECT_NE(found, m_programDir + QStringLiteral("/soffice.bin"));
    // Only the distribution's own installation may still be found.
    if (!found.isEmpty()) {
        EXPECT_EQ(found, QStringLiteral("/usr/lib/libreoffice/program/soffice.bin"));
    }
}

}  // namespace
