#include "conversion/WordFinishing.h"
#include "platform/OfficeSuite.h"
#include "platform/ProcessUtilityLibrary.h"
#include "support/FakeServices.h"

#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

#include <optional>

namespace {

// Test names from the rows' own names.
template <class Row> std::string RowName(const ::testing::TestParamInfo<Row>& row)
{
    return row.param.name;
}

const QString Program = QStringLiteral("/opt/office/program/soffice.bin");
const QByteArray EngineOutput = "{\\rtf1\\ansi engine output\\par}";
const QByteArray Converted = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 converted";
const QByteArray OleMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr qint32 LibreOffice74 = 0x00070004;  // 16.4 on Word's scale: the process route
constexpr qint32 LibreOffice80 = 0x00080000;  // 17.0: the suite's own quit
constexpr qint32 NewProcess = 700;

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void WriteAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QStringList Entries(const QString& directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                     QDir::NoDotAndDotDot);
}

QStringList CallsNamed(const QStringList& calls, const QString& name)
{
    QStringList found;
    for (const QString& call : calls) {
        if (call.startsWith(name + u'('))
            found.append(call);
    }
    return found;
}

// A suite that works like the real one: it writes its copy into the output folder under the
// source's name and, when asked to, shows up in the process table while it runs.
class FinishingFixture
{
protected:
    FinishingFixture()
    {
        m_env.context.applicationDir = m_appDir.path();
        QDir::setCurrent(m_startDir.path());
        m_target = QDir(m_targetDir.path()).filePath(QStringLiteral("report.doc"));
        WriteAll(m_target, EngineOutput);
        m_env.state.OutputPath = m_target;
        m_env.officeSuite.programPath = Program;
        m_env.processUtility.processes.insert(OfficeProcessName, {100, 900});
        m_env.officeSuite.onStart = [this](const OfficeJob& job) {
            if (m_writesCopy)
                WriteAll(QDir(job.outputDirectory).filePath(QFileInfo(job.source).fileName()),
                         Converted);
            if (m_addsProcess) {
                QList<qint32>& ids = m_env.processUtility.processes[OfficeProcessName];
                ids.append(NewProcess);
                std::sort(ids.begin(), ids.end());
            }
        };
    }

    void SetVersion(qint32 officeVersion)
    {
        m_env.processUtility.fileVersions.insert(Program, officeVersion);
    }

    // What every run leaves behind, whatever its outcome.
    void ExpectCleanEnd()
    {
        EXPECT_EQ(QDir::currentPath(), QDir(m_startDir.path()).canonicalPath());
        EXPECT_EQ(Entries(m_targetDir.path()), QStringList{QStringLiteral("report.doc")});
        EXPECT_TRUE(
            Entries(QDir::tempPath()).filter(QRegularExpression(QStringLiteral("^~SV"))).isEmpty());
        EXPECT_EQ(m_env.officeSuite.run.released, m_env.officeSuite.run.started);
        // Whatever ran before is never touched.
        for (const QString& call : m_env.processUtility.calls) {
            EXPECT_FALSE(call.contains(QStringLiteral("(100)")) ||
                         call.contains(QStringLiteral("(900)")))
                << call.toStdString();
        }
    }

    QTemporaryDir m_startDir;
    QTemporaryDir m_appDir;
    QTemporaryDir m_targetDir;
    QString m_target;
    FakeEnvironment m_env;
    bool m_writesCopy = true;
    bool m_addsProcess = true;
};

struct EndingRow
{
    const char* name;
    qint32 officeVersion;
    bool addsProcess;
    qint32 quitResult;
    const char* processCalls;  // QuitProcess and KillProcess, in order
    qint32 objectQuits;
};

class FinishingEnds : public FinishingFixture, public ::testing::TestWithParam<EndingRow>
{
};

TEST_P(FinishingEnds, ReplacesTheFileAndEndsOnlyTheProcessItStarted)
{
    const EndingRow& row = GetParam();
    SetVersion(row.officeVersion);
    m_addsProcess = row.addsProcess;
    m_env.processUtility.quitResult = row.quitResult;

    EXPECT_EQ(FinishWithWord(m_env.context), -1);

    EXPECT_EQ(ReadAll(m_target), Converted);
    const QStringList& calls = m_env.processUtility.calls;
    const QStringList ended = CallsNamed(calls, QStringLiteral("QuitProcess")) +
                              CallsNamed(calls, QStringLiteral("KillProcess"));
    EXPECT_EQ(ended.join(u' ').toStdString(), row.processCalls);
    EXPECT_EQ(m_env.officeSuite.run.quits, row.objectQuits);
    EXPECT_EQ(m_env.officeSuite.programsStarted, QStringList{Program});
    ExpectCleanEnd();
}

INSTANTIATE_TEST_SUITE_P(
    Rows, FinishingEnds,
    ::testing::Values(EndingRow{"NewProcessQuits", LibreOffice74, true, 1, "QuitProcess(700)", 0},
                      EndingRow{"NewProcessKilled", LibreOffice74, true, 0,
                                "QuitProcess(700) KillProcess(700)", 0},
                      EndingRow{"NoNewProcessFound", LibreOffice74, false, 1, "", 1},
                      EndingRow{"LastVersionBelow17", 0x0007FFFF, true, 1, "QuitProcess(700)", 0},
                      EndingRow{"Version17QuitsTheObject", LibreOffice80, true, 1, "", 1},
                      EndingRow{"LaterVersionQuitsTheObject", 0x00180002, true, 0, "", 1}),
    RowName<FinishingEnds::ParamType>);

TEST(FinishingProcessSearch, TakesTheFirstIdThatWasNotRunningBefore)
{
    FakeEnvironment env;
    QTemporaryDir targetDir;
    const QString target = QDir(targetDir.path()).filePath(QStringLiteral("a.doc"));
    WriteAll(target, EngineOutput);
    env.state.OutputPath = target;
    env.officeSuite.programPath = Program;
    env.processUtility.fileVersions.insert(Program, LibreOffice74);
    env.processUtility.processes.insert(OfficeProcessName, {100, 900});
    // The new one sorts between the old ones, and a second newcomer follows it.
    env.officeSuite.onStart = [&env](const OfficeJob&) {
        env.processUtility.processes[OfficeProcessName] = {100, 500, 900, 950};
    };
    env.processUtility.quitResult = 1;

    FinishWithWord(env.context);

    const QStringList& calls = env.processUtility.calls;
    EXPECT_EQ(CallsNamed(calls, QStringLiteral("QuitProcess")),
              QStringList{QStringLiteral("QuitProcess(500)")});
    // Listing before the start reads both, the search stops at the first stranger.
    EXPECT_EQ(CallsNamed(calls, QStringLiteral("GetProcessID")).join(u' '),
              QStringLiteral("GetProcessID(soffice.bin,0) GetProcessID(soffice.bin,1) "
                             "GetProcessID(soffice.bin,0) GetProcessID(soffice.bin,1)"));
}

struct AbsentRow
{
    const char* name;
    const char* programPath;
    qint32 officeVersion;
};

class FinishingWithoutSuite : public FinishingFixture, public ::testing::TestWithParam<AbsentRow>
{
};

TEST_P(FinishingWithoutSuite, LeavesTheEnginesFileAndMakesNoProcessCall)
{
    m_env.officeSuite.programPath = QString::fromUtf8(GetParam().programPath);
    SetVersion(GetParam().officeVersion);

    EXPECT_EQ(FinishWithWord(m_env.context), 0);

    EXPECT_EQ(ReadAll(m_target), EngineOutput);
    EXPECT_TRUE(m_env.officeSuite.jobs.isEmpty());
    for (const QString& call : m_env.processUtility.calls)
        EXPECT_TRUE(call.startsWith(QStringLiteral("GetFileVersion("))) << call.toStdString();
    ExpectCleanEnd();
}

INSTANTIATE_TEST_SUITE_P(Rows, FinishingWithoutSuite,
                         ::testing::Values(AbsentRow{"NotInstalled", "", LibreOffice74},
                                           AbsentRow{"VersionUnreadable",
                                                     "/opt/office/program/soffice.bin", 0}),
                         RowName<FinishingWithoutSuite::ParamType>);

struct FailureRow
{
    const char* name;
    bool startFails;
    qint32 runsForMs;
    bool succeeds;
    bool writesCopy;
    qint32 officeVersion;
    const char* processCalls;
    qint32 objectQuits;
    qint32 waits;
};

class FinishingFails : public FinishingFixture, public ::testing::TestWithParam<FailureRow>
{
};

TEST_P(FinishingFails, KeepsTheEnginesFileAndStillEndsTheSuite)
{
    const FailureRow& row = GetParam();
    SetVersion(row.officeVersion);
    m_env.officeSuite.startFails = row.startFails;
    m_env.officeSuite.run.runsForMs = row.runsForMs;
    m_env.officeSuite.run.succeeds = row.succeeds;
    m_writesCopy = row.writesCopy;
    m_env.processUtility.quitResult = 1;

    EXPECT_EQ(FinishWithWord(m_env.context), 0);

    EXPECT_EQ(ReadAll(m_target), EngineOutput);
    const QStringList& calls = m_env.processUtility.calls;
    const QStringList ended = CallsNamed(calls, QStringLiteral("QuitProcess")) +
                              CallsNamed(calls, QStringLiteral("KillProcess"));
    EXPECT_EQ(ended.join(u' ').toStdString(), row.processCalls);
    EXPECT_EQ(m_env.officeSuite.run.quits, row.objectQuits);
    EXPECT_EQ(m_env.officeSuite.run.waits, row.waits);
    ExpectCleanEnd();
}

INSTANTIATE_TEST_SUITE_P(
    Rows, FinishingFails,
    ::testing::Values(FailureRow{"StartFails", true, 0, true, false, LibreOffice74, "", 0, 0},
                      FailureRow{"HangsOnProcessRoute", false, -1, true, true, LibreOffice74,
                                 "QuitProcess(700)", 0, OfficeHangLimitMs / 100},
                      FailureRow{"HangsOnQuitRoute", false, -1, true, true, LibreOffice80, "", 1,
                                 OfficeHangLimitMs / 100},
                      FailureRow{"EndsJustAfterTheLimit", false, OfficeHangLimitMs + 1, true, true,
                                 LibreOffice80, "", 1, OfficeHangLimitMs / 100},
                      FailureRow{"ReportsFailure", false, 200, false, true, LibreOffice74,
                                 "QuitProcess(700)", 0, 2},
                      FailureRow{"WritesNothing", false, 0, true, false, LibreOffice74,
                                 "QuitProcess(700)", 0, 1}),
    RowName<FinishingFails::ParamType>);

class FinishingJob : public FinishingFixture, public ::testing::Test
{
};

TEST_F(FinishingJob, WaitsInShortSlicesAndKeepsTheDialogsAlive)
{
    SetVersion(LibreOffice74);
    m_env.officeSuite.run.runsForMs = 350;
    bool handled = false;
    QTimer::singleShot(0, [&handled] { handled = true; });

    EXPECT_EQ(FinishWithWord(m_env.context), -1);

    EXPECT_TRUE(handled);
    EXPECT_EQ(m_env.officeSuite.run.waits, 4);
    EXPECT_EQ(m_env.officeSuite.run.waitedMs, 400);
}

TEST_F(FinishingJob, ASuiteThatEndsOnTheLastSliceHasNotHung)
{
    SetVersion(LibreOffice74);
    m_env.officeSuite.run.runsForMs = OfficeHangLimitMs;

    EXPECT_EQ(FinishWithWord(m_env.context), -1);

    EXPECT_EQ(ReadAll(m_target), Converted);
    EXPECT_EQ(m_env.officeSuite.run.waits, OfficeHangLimitMs / 100);
}

TEST_F(FinishingJob, ConvertsTheTargetByItsFullNameInPrivateFolders)
{
    SetVersion(LibreOffice74);
    const QString name = QStringLiteral("-x 'q\" $(touch p); \u65E5\u672C.doc");
    ASSERT_TRUE(QDir(m_targetDir.path()).mkdir(QStringLiteral("sub dir")));
    const QString target = QDir(m_targetDir.path()).filePath(QStringLiteral("sub dir/") + name);
    WriteAll(target, EngineOutput);
    QDir::setCurrent(m_targetDir.path());
    m_env.state.OutputPath = QStringLiteral("sub dir/") + name;
    QStringList foldersDuringRun;
    const auto writeCopy = m_env.officeSuite.onStart;
    m_env.officeSuite.onStart = [&](const OfficeJob& job) {
        foldersDuringRun =
            Entries(QDir::tempPath()).filter(QRegularExpression(QStringLiteral("^~SV")));
        writeCopy(job);
    };

    EXPECT_EQ(FinishWithWord(m_env.context), -1);

    ASSERT_EQ(m_env.officeSuite.jobs.size(), 1);
    const OfficeJob& job = m_env.officeSuite.jobs.first();
    EXPECT_EQ(job.source, QDir(m_targetDir.path()).filePath(QStringLiteral("sub dir/") + name));
    EXPECT_EQ(ReadAll(target), Converted);
    EXPECT_EQ(Entries(QFileInfo(target).absolutePath()), QStringList{name});
    // Profile and copy lie apart from each other, in a folder of the program's own that the
    // end-of-run sweep would know by its prefix, and that is gone now.
    EXPECT_NE(job.profileDirectory, job.outputDirectory);
    ASSERT_EQ(foldersDuringRun.size(), 1);
    const QString work = QDir(QDir::tempPath()).filePath(foldersDuringRun.first());
    EXPECT_TRUE(job.profileDirectory.startsWith(work + u'/'));
    EXPECT_TRUE(job.outputDirectory.startsWith(work + u'/'));
    EXPECT_FALSE(QFileInfo::exists(work));
    EXPECT_EQ(QDir::currentPath(), QDir(m_targetDir.path()).canonicalPath());
}

TEST_F(FinishingJob, KeepsTheTargetsPermissions)
{
    SetVersion(LibreOffice74);
    QFile::setPermissions(m_target, QFileDevice::ReadOwner | QFileDevice::WriteOwner);

    EXPECT_EQ(FinishWithWord(m_env.context), -1);

    const QFileDevice::Permissions permissions = QFile::permissions(m_target);
    EXPECT_TRUE(permissions.testFlags(QFileDevice::ReadOwner | QFileDevice::WriteOwner));
    EXPECT_FALSE(permissions & (QFileDevice::ReadGroup | QFileDevice::ReadOther));
}

// The installed suite's process handling, with a stand-in program in the suite's place: it
// logs its arguments, asks for a restart after its first profile set-up as LibreOffice does,
// and then converts, fails or hangs as told.
class SuiteStandIn : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QDir dir(m_dir.path());
        m_program = dir.filePath(QStringLiteral("soffice.bin"));
        WriteAll(m_program, "#!/bin/sh\n"
                            "here=$(dirname \"$0\")\n"
                            "for a in \"$@\"; do printf '[%s]' \"$a\"; done >> \"$here/log\"\n"
                            "echo >> \"$here/log\"\n"
                            "case \"$*\" in *--terminate_after_init*)\n"
                            "  [ -e \"$here/restarted\" ] && exit 0\n"
                            "  touch \"$here/restarted\"; exit 81;;\n"
                            "esac\n"
                            "case $(cat \"$here/mode\") in\n"
                            "  hang) exec sleep 600;;\n"
                            "  fail) exit 1;;\n"
                            "esac\n");
        QFile::setPermissions(m_program, QFile::permissions(m_program) | QFileDevice::ExeOwner);
        ASSERT_TRUE(dir.mkpath(QStringLiteral("profile")));
        ASSERT_TRUE(dir.mkpath(QStringLiteral("out")));
        m_job = {dir.filePath(QStringLiteral("-a 'b' $(c); \u65E5.doc")),
                 dir.filePath(QStringLiteral("out")), dir.filePath(QStringLiteral("profile"))};
    }

    std::unique_ptr<OfficeProcess> Start(const QByteArray& mode)
    {
        WriteAll(QDir(m_dir.path()).filePath(QStringLiteral("mode")), mode);
        return InstalledOfficeSuite().StartConversion(m_program, m_job, {});
    }

    QStringList Log() const
    {
        return QString::fromUtf8(ReadAll(QDir(m_dir.path()).filePath(QStringLiteral("log"))))
            .split(u'\n', Qt::SkipEmptyParts);
    }

    QTemporaryDir m_dir;
    QString m_program;
    OfficeJob m_job;
};

TEST_F(SuiteStandIn, SetsUpTheProfileThenConvertsWithEveryNameAsAUrl)
{
    const auto process = Start("ok");
    ASSERT_TRUE(process);
    ASSERT_TRUE(process->WaitForEnd(10000));
    EXPECT_TRUE(process->Succeeded());

    const QString profile =
        QStringLiteral("[-env:UserInstallation=") +
        QUrl::fromLocalFile(m_job.profileDirectory).toString(QUrl::FullyEncoded) + u']';
    const QStringList log = Log();
    ASSERT_EQ(log.size(), 3);
    // The restart that a new profile asks for happens before the conversion starts.
    for (int run = 0; run < 2; ++run) {
        EXPECT_TRUE(log[run].startsWith(QStringLiteral("[--headless]")));
        EXPECT_TRUE(log[run].contains(profile));
        EXPECT_TRUE(log[run].endsWith(QStringLiteral("[--terminate_after_init]")));
    }
    EXPECT_TRUE(log[2].contains(profile));
    EXPECT_TRUE(log[2].endsWith(
        QStringLiteral("[--infilter=Rich Text Format][--convert-to][doc:MS Word 97][--outdir][") +
        QUrl::fromLocalFile(m_job.outputDirectory).toString(QUrl::FullyEncoded) +
        QStringLiteral("][") + QUrl::fromLocalFile(m_job.source).toString(QUrl::FullyEncoded) +
        u']'))
        << log[2].toStdString();
    EXPECT_TRUE(log[2].contains(QStringLiteral("file:///")));
}

TEST_F(SuiteStandIn, TellsFailureAndEndsAHungProcessWhenAskedToQuit)
{
    const auto failing = Start("fail");
    ASSERT_TRUE(failing);
    ASSERT_TRUE(failing->WaitForEnd(10000));
    EXPECT_FALSE(failing->Succeeded());

    const auto hanging = Start("hang");
    ASSERT_TRUE(hanging);
    EXPECT_FALSE(hanging->WaitForEnd(300));
    hanging->Quit();
    EXPECT_TRUE(hanging->WaitForEnd(0));
    EXPECT_FALSE(hanging->Succeeded());
}

TEST_F(SuiteStandIn, AProgramThatCantStartGivesNoProcess)
{
    EXPECT_FALSE(
        InstalledOfficeSuite().StartConversion(m_program + QStringLiteral(".missing"), m_job, {}));
}

// The real office suite on a real file, beside a LibreOffice of someone else's that must
// survive it.
class RealOffice : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_program = InstalledOfficeSuite().FindProgram();
        if (m_program.isEmpty())
            GTEST_SKIP() << "no office suite installed";
    }

    void TearDown() override
    {
        if (m_other.state() != QProcess::NotRunning) {
            m_other.terminate();
            if (!m_other.waitForFinished(10000))
                m_other.kill();
            m_other.waitForFinished(10000);
        }
    }

    // Starts a headless LibreOffice with a profile of its own that waits for work.
    bool StartOtherOffice(const QString& profile)
    {
        const QStringList common{QStringLiteral("--headless"), QStringLiteral("--norestore"),
                                 QStringLiteral("--nolockcheck"),
                                 QStringLiteral("-env:UserInstallation=") +
                                     QUrl::fromLocalFile(profile).toString(QUrl::FullyEncoded)};
        // A new profile makes the first run ask for a restart, so it is made first.
        QProcess setup;
        setup.start(m_program, common + QStringList{QStringLiteral("--terminate_after_init")});
        if (!setup.waitForFinished(60000))
            return false;
        m_other.start(m_program, common);
        return m_other.waitForStarted(10000);
    }

    QString m_program;
    QProcess m_other;
};

TEST_F(RealOffice, WritesAWordDocumentInPlaceAndLeavesOtherOfficesAlone)
{
    QTemporaryDir otherProfile;
    ASSERT_TRUE(StartOtherOffice(otherProfile.path()));

    QTemporaryDir targetDir;
    const QString name = QStringLiteral("-my 'report' $(touch x); \u65E5\u672C\u8A9E.doc");
    const QString target = QDir(targetDir.path()).filePath(name);
    WriteAll(target, "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Times New Roman;}}\\f0 Quarterly "
                     "report \\u26085?\\u26412?\\u-30942?\\par}");

    RunState state;
    state.OutputPath = target;
    FakeStore store;
    FakeHelpViewer help;
    FakeWindowGeometry geometry;
    const auto library = LoadProcessUtilityLibrary(QStringLiteral(VELMORA_APP_DIR));
    AppContext context{state,    store.Factory(), help,
                       *library, geometry,        QStringLiteral(VELMORA_APP_DIR)};
    const qint32 before = library->GetProcessCount(OfficeProcessName);
    ASSERT_GE(before, 1);

    EXPECT_EQ(FinishWithWord(context), -1);

    EXPECT_TRUE(ReadAll(target).startsWith(OleMagic));
    EXPECT_EQ(Entries(targetDir.path()), QStringList{name});
    EXPECT_TRUE(
        Entries(QDir::tempPath()).filter(QRegularExpression(QStringLiteral("^~SV"))).isEmpty());
    EXPECT_EQ(m_other.state(), QProcess::Running);
    EXPECT_EQ(library->GetProcessCount(OfficeProcessName), before);
}

}  // namespace
