#include "conversion/WordFinishing.h"
#include "platform/OfficeSuite.h"
#include "platform/ProcessLauncher.h"
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
    qint32 runsForMs;  // -1: never ends by itself
    FakeOfficeRun::Work working;
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
    m_env.officeSuite.run.working = row.working;
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

// The engine's file is a short one: the time limit is about two minutes.
const qint32 SmallLimitSlices =
    static_cast<qint32>((OfficeTimeLimitMs(EngineOutput.size()) + 99) / 100);
constexpr qint32 IdleSlices = OfficeIdleLimitMs / 100;

INSTANTIATE_TEST_SUITE_P(
    Rows, FinishingFails,
    ::testing::Values(FailureRow{"StartFails", true, 0, FakeOfficeRun::Busy, true, false,
                                 LibreOffice74, "", 0, 0},
                      FailureRow{"IdleOnProcessRoute", false, -1, FakeOfficeRun::Idle, true, true,
                                 LibreOffice74, "QuitProcess(700)", 0, IdleSlices},
                      FailureRow{"IdleOnQuitRoute", false, -1, FakeOfficeRun::Idle, true, true,
                                 LibreOffice80, "", 1, IdleSlices},
                      FailureRow{"BusyPastTheLimit", false, -1, FakeOfficeRun::Busy, true, true,
                                 LibreOffice80, "", 1, SmallLimitSlices},
                      FailureRow{"UnseenPastTheLimit", false, -1, FakeOfficeRun::Unseen, true, true,
                                 LibreOffice80, "", 1, SmallLimitSlices},
                      FailureRow{"ReportsFailure", false, 200, FakeOfficeRun::Busy, false, true,
                                 LibreOffice74, "QuitProcess(700)", 0, 2},
                      FailureRow{"WritesNothing", false, 0, FakeOfficeRun::Busy, true, false,
                                 LibreOffice74, "QuitProcess(700)", 0, 1}),
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

TEST_F(FinishingJob, ASuiteAtWorkIsGivenTimeThatGrowsWithTheDocument)
{
    SetVersion(LibreOffice74);
    // A large document: the suite works for five minutes, longer than idle or two minutes.
    QFile big(m_target);
    ASSERT_TRUE(big.open(QIODevice::Append));
    big.write(QByteArray(8 * 1024 * 1024, ' '));
    big.close();
    m_env.officeSuite.run.runsForMs = 300000;
    EXPECT_GT(OfficeTimeLimitMs(big.size()), 300000);

    EXPECT_EQ(FinishWithWord(m_env.context), -1);

    EXPECT_EQ(ReadAll(m_target), Converted);
    EXPECT_EQ(m_env.officeSuite.run.waits, 3000);
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
    // The copy and the suite's own files lie in a folder of the program's own that the
    // end-of-run sweep would know by its prefix, and that is gone now.
    ASSERT_EQ(foldersDuringRun.size(), 1);
    const QString work = QDir(QDir::tempPath()).filePath(foldersDuringRun.first());
    EXPECT_EQ(job.workDirectory, work);
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

// The suite's process and profile handling, with a stand-in program in the suite's place: it
// logs its arguments and temporary folder, asks for a restart when it finds a profile without
// its user folder (as LibreOffice does after setting one up), and then converts, fails or hangs
// as told.
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
                            "printf '\\n[TMPDIR=%s]\\n' \"$TMPDIR\" >> \"$here/log\"\n"
                            "mkdir \"$TMPDIR/lu1.tmp\"\n"
                            "for a in \"$@\"; do case $a in -env:UserInstallation=file://*)\n"
                            "  profile=${a#-env:UserInstallation=file://};; esac; done\n"
                            "[ -d \"$profile/user\" ] || { mkdir -p \"$profile/user\"; exit 81; }\n"
                            "case $(cat \"$here/mode\") in\n"
                            "  hang) exec sleep 600;;\n"
                            "  fail) exit 1;;\n"
                            "esac\n");
        QFile::setPermissions(m_program, QFile::permissions(m_program) | QFileDevice::ExeOwner);
        m_suite = CreateLibreOffice(*m_launcher, dir.filePath(QStringLiteral("cache")));
    }

    OfficeJob Job(const QString& work)
    {
        const QDir dir(m_dir.path());
        EXPECT_TRUE(dir.mkpath(work + QStringLiteral("/out")));
        return {dir.filePath(QStringLiteral("-a 'b' $(c); \u65E5.doc")),
                dir.filePath(work + QStringLiteral("/out")), dir.filePath(work)};
    }

    std::unique_ptr<OfficeProcess> Start(const QByteArray& mode, const QString& work)
    {
        WriteAll(QDir(m_dir.path()).filePath(QStringLiteral("mode")), mode);
        return m_suite->StartConversion(m_program, Job(work));
    }

    // Each start of the program: its arguments, then its temporary folder.
    QList<QStringList> Starts() const
    {
        const QStringList lines =
            QString::fromUtf8(ReadAll(QDir(m_dir.path()).filePath(QStringLiteral("log"))))
                .split(u'\n', Qt::SkipEmptyParts);
        QList<QStringList> starts;
        for (qsizetype i = 0; i + 1 < lines.size(); i += 2)
            starts.append({lines[i], lines[i + 1]});
        return starts;
    }

    QString ProfileArgument(const QString& profile) const
    {
        return QStringLiteral("[-env:UserInstallation=") +
               QUrl::fromLocalFile(QDir(m_dir.path()).filePath(profile))
                   .toString(QUrl::FullyEncoded) +
               u']';
    }

    QTemporaryDir m_dir;
    QString m_program;
    std::unique_ptr<ProcessLauncher> m_launcher = CreateProcessLauncher();
    std::unique_ptr<OfficeSuite> m_suite;
};

TEST_F(SuiteStandIn, KeptProfileIsMadeOnceAndThenEachConversionIsOneStart)
{
    for (const char* work : {"w1", "w2"}) {
        const auto process = Start("ok", QString::fromLatin1(work));
        ASSERT_TRUE(process);
        ASSERT_TRUE(process->WaitForEnd(10000));
        EXPECT_TRUE(process->Succeeded());
    }

    const QList<QStringList> starts = Starts();
    ASSERT_EQ(starts.size(), 3) << "a restart for the new profile, then one start each";
    const OfficeJob job = Job(QStringLiteral("w2"));
    for (const QStringList& start : starts) {
        EXPECT_TRUE(start[0].startsWith(QStringLiteral("[--headless]")));
        EXPECT_TRUE(start[0].contains(ProfileArgument(QStringLiteral("cache/office-profile"))));
    }
    EXPECT_TRUE(starts[2][0].endsWith(
        QStringLiteral("[--infilter=Rich Text Format][--convert-to][doc:MS Word 97][--outdir][") +
        QUrl::fromLocalFile(job.outputDirectory).toString(QUrl::FullyEncoded) +
        QStringLiteral("][") + QUrl::fromLocalFile(job.source).toString(QUrl::FullyEncoded) + u']'))
        << starts[2][0].toStdString();
    // The suite's own temporary files go to the job's folder, not the user's.
    EXPECT_EQ(starts[2][1], QStringLiteral("[TMPDIR=") + job.workDirectory + "/tmp]");
    EXPECT_TRUE(QFileInfo::exists(job.workDirectory + "/tmp/lu1.tmp"));
}

TEST_F(SuiteStandIn, AConversionWhileTheKeptProfileIsInUseGetsAProfileOfItsOwn)
{
    const auto first = Start("hang", QStringLiteral("w1"));
    ASSERT_TRUE(first);
    const auto second = Start("ok", QStringLiteral("w2"));
    ASSERT_TRUE(second);
    ASSERT_TRUE(second->WaitForEnd(10000));
    EXPECT_TRUE(second->Succeeded());
    first->Quit();

    bool ownProfileUsed = false;
    for (const QStringList& start : Starts())
        ownProfileUsed = ownProfileUsed || start[0].contains(ProfileArgument("w2/profile"));
    EXPECT_TRUE(ownProfileUsed);
}

TEST_F(SuiteStandIn, FailureDiscardsTheKeptProfileAndAHungProcessEndsWhenAskedToQuit)
{
    const QString kept = QDir(m_dir.path()).filePath(QStringLiteral("cache/office-profile"));
    {
        const auto failing = Start("fail", QStringLiteral("w1"));
        ASSERT_TRUE(failing);
        ASSERT_TRUE(failing->WaitForEnd(10000));
        EXPECT_FALSE(failing->Succeeded());
        EXPECT_TRUE(QFileInfo::exists(kept));
    }
    EXPECT_FALSE(QFileInfo::exists(kept)) << "the next conversion makes a new one";

    const auto hanging = Start("hang", QStringLiteral("w2"));
    ASSERT_TRUE(hanging);
    EXPECT_FALSE(hanging->WaitForEnd(300));
    EXPECT_GE(hanging->ProcessorTimeMs(), 0);
    hanging->Quit();
    EXPECT_TRUE(hanging->WaitForEnd(0));
    EXPECT_FALSE(hanging->Succeeded());
}

TEST_F(SuiteStandIn, AProgramThatCantStartGivesNoProcess)
{
    EXPECT_FALSE(m_suite->StartConversion(m_program + QStringLiteral(".missing"),
                                          Job(QStringLiteral("w1"))));
}

// The real office suite on a real file, beside a LibreOffice of someone else's that must
// survive it.
class RealOffice : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_program = m_suite->FindProgram();
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
        QProcessEnvironment setupEnvironment = QProcessEnvironment::systemEnvironment();
        setupEnvironment.insert(QStringLiteral("TMPDIR"), m_otherTemp.path());
        setup.setProcessEnvironment(setupEnvironment);
        setup.start(m_program, common + QStringList{QStringLiteral("--terminate_after_init")});
        if (!setup.waitForFinished(60000))
            return false;
        // Its temporary files go elsewhere, so that ours can be told apart.
        m_other.setProcessEnvironment(setupEnvironment);
        m_other.start(m_program, common);
        return m_other.waitForStarted(10000);
    }

    std::unique_ptr<ProcessLauncher> m_launcher = CreateProcessLauncher();
    std::unique_ptr<OfficeSuite> m_suite = CreateLibreOffice(*m_launcher, OfficeProfileHome());
    QString m_program;
    QTemporaryDir m_otherTemp;
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

    FakeEnvironment env;
    env.state.OutputPath = target;
    const auto library = LoadProcessUtilityLibrary(QStringLiteral(VELMORA_APP_DIR));
    AppContext context{env.state,       env.store.Factory(), env.help,   *library, env.geometry,
                       VELMORA_APP_DIR, *m_launcher,         env.opener, *m_suite, env.clock};
    const qint32 before = library->GetProcessCount(OfficeProcessName);
    ASSERT_GE(before, 1);
    const QStringList tempBefore = Entries(QDir::tempPath());

    EXPECT_EQ(FinishWithWord(context), -1);

    EXPECT_TRUE(ReadAll(target).startsWith(OleMagic));
    EXPECT_EQ(Entries(targetDir.path()), QStringList{name});
    // Neither our folders nor the suite's own temporary files stay behind.
    QStringList added = Entries(QDir::tempPath());
    for (const QString& entry : tempBefore)
        added.removeAll(entry);
    EXPECT_TRUE(added.isEmpty()) << added.join(u' ').toStdString();
    EXPECT_TRUE(QFileInfo::exists(OfficeProfileHome() + QStringLiteral("/office-profile/user")))
        << "the profile is kept for the next run";
    EXPECT_EQ(m_other.state(), QProcess::Running);
    EXPECT_EQ(library->GetProcessCount(OfficeProcessName), before);
}

}  // namespace
