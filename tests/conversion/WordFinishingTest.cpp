// Finishing a .doc through the office suite: with a fake suite and process table, the version
// that decides the route, how the file is replaced, which process is ended and when a wait gives
// up; the LibreOffice class over a fake launcher, for its kept profile; and once the real suite.

#include "conversion/WordFinishing.h"
#include "support/FakeServices.h"

#include "TestPaths.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const QString Program = QStringLiteral("/opt/office/program/soffice.bin");
const QString Name = QStringLiteral("-x 'q\" $(touch p); \u65E5\u672C.doc");
const QByteArray EngineOutput = "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Times New Roman;}}\\f0 "
                                "Quarterly report \\u26085?\\u26412?\\par}";
const QByteArray Converted = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";  // an OLE file's start

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList Entries(const QString& directory, const QString& pattern = QString())
{
    return QDir(directory)
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
        .filter(QRegularExpression(pattern));
}

struct Row
{
    const char* name;
    qint32 version = 0x00070004;            // 7.4 is 16.4 on Word's scale: the process route
    QList<qint32> after = {100, 700, 900};  // the process table once the suite has started
    qint32 quitResult = 1;                  // non-zero: QuitProcess ends the process
    bool startFails = false;
    qint32 runsForMs = 0;  // -1: never ends by itself
    FakeOfficeRun::Work working = FakeOfficeRun::Busy;
    bool succeeds = true;
    bool writesCopy = true;
    int megabytes = 0;  // added to the engine's file
    qint16 result = -1;
    const char* ended = "QuitProcess(700)";  // QuitProcess and KillProcess calls, in order
    qint32 objectQuits = 0;
    qint32 waits = -1;  // -1: not counted
};

// A private target named relative to the working directory, and a suite that writes its copy
// into the output folder under the source's name; its start changes the process table, which
// held 100 and 900 before.
class Finishing : public ::testing::TestWithParam<Row>
{
protected:
    void SetUp() override
    {
        const Row& row = GetParam();
        ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("sub dir")));
        QDir::setCurrent(dir.path());
        QFile file(target);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(EngineOutput + QByteArray(row.megabytes << 20, ' '));
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        env.state.OutputPath = QStringLiteral("sub dir/") + Name;
        env.context.applicationDir = dir.filePath(QStringLiteral("sub dir"));
        env.officeSuite.programPath = Program;
        env.officeSuite.startFails = row.startFails;
        env.officeSuite.run.runsForMs = row.runsForMs;
        env.officeSuite.run.working = row.working;
        env.officeSuite.run.succeeds = row.succeeds;
        env.processUtility.fileVersions.insert(Program, row.version);
        env.processUtility.quitResult = row.quitResult;
        env.processUtility.processes.insert(OfficeProcessName, {100, 900});
        env.officeSuite.onStart = [this, row](const OfficeJob& job) {
            folders = Entries(QDir::tempPath(), QStringLiteral("^~SV"));
            QFile copy(QDir(job.outputDirectory).filePath(QFileInfo(job.source).fileName()));
            if (row.writesCopy && copy.open(QIODevice::WriteOnly))
                copy.write(Converted);
            env.processUtility.processes[OfficeProcessName] = row.after;
        };
    }

    QTemporaryDir dir;
    QString target = dir.filePath(QStringLiteral("sub dir/") + Name);
    FakeEnvironment env;
    QStringList folders;  // ours in the temporary folder while the suite runs
};

TEST_P(Finishing, ReplacesTheFileOrKeepsItAndEndsOnlyTheSuiteItStarted)
{
    const Row& row = GetParam();
    const QByteArray engineOutput = ReadAll(target);
    bool pumped = false;
    QTimer pump;
    QObject::connect(&pump, &QTimer::timeout, [&pumped] { pumped = true; });
    pump.start(0);

    EXPECT_EQ(FinishWithWord(env.context), row.result);

    EXPECT_TRUE(ReadAll(target) == (row.result ? Converted : engineOutput));
    EXPECT_EQ(env.officeSuite.jobs.value(0, {target, {}, {}}).source, target);
    const QStringList ended =
        env.processUtility.calls.filter(QRegularExpression(QStringLiteral("^(Quit|Kill)Process")));
    EXPECT_EQ(ended.join(u' ').toStdString(), row.ended);
    EXPECT_EQ(env.officeSuite.run.quits, row.objectQuits);
    EXPECT_TRUE(row.waits < 0 || env.officeSuite.run.waits == row.waits)
        << env.officeSuite.run.waits;
    EXPECT_TRUE(pumped || env.officeSuite.run.waits <= 1) << "the dialogs stay alive meanwhile";
    // One private file stays at the target, and everything else goes: the suite's own files lay
    // in a folder of ours that the end-of-run sweep would know by its prefix.
    EXPECT_EQ(Entries(QFileInfo(target).absolutePath()), QStringList{Name});
    EXPECT_EQ(QFile::permissions(target) & 0x0077, QFileDevice::Permissions{});
    ASSERT_EQ(folders.size(), env.officeSuite.run.started ? 1 : 0);
    if (!folders.isEmpty()) {
        EXPECT_TRUE(env.officeSuite.jobs.first().workDirectory.endsWith(u'/' + folders.first()));
    }
    EXPECT_EQ(Entries(QDir::tempPath(), QStringLiteral("^~SV")), QStringList());
    EXPECT_EQ(env.officeSuite.run.released, env.officeSuite.run.started);
    // The suite's version is read in the application directory, which is left again.
    EXPECT_EQ(env.processUtility.workingDirectories.value(0), env.context.applicationDir);
    EXPECT_EQ(QDir::currentPath(), QDir(dir.path()).canonicalPath());
    // Whatever ran before is never touched.
    EXPECT_EQ(env.processUtility.calls.filter(QRegularExpression(QStringLiteral("\\([19]00\\)"))),
              QStringList());
}

// A suite at work may use two minutes and a minute per megabyte of the document of processor
// time; one that does nothing for a minute has hung.
const qint32 LimitSlices =
    static_cast<qint32>((120000 + EngineOutput.size() * 60000 / (1 << 20) + 99) / 100);

INSTANTIATE_TEST_SUITE_P(
    Rows, Finishing,
    ::testing::Values(
        Row{.name = "NewProcessQuits", .waits = 1},
        Row{.name = "NewProcessKilled",
            .quitResult = 0,
            .ended = "QuitProcess(700) KillProcess(700)"},
        Row{.name = "FirstNewcomerIsOurs",
            .after = {100, 500, 900, 950},
            .ended = "QuitProcess(500)"},
        Row{.name = "NoNewProcessFound", .after = {100, 900}, .ended = "", .objectQuits = 1},
        Row{.name = "LastBelow17", .version = 0x0007FFFF},
        Row{.name = "From17TheObjectQuits", .version = 0x00080000, .ended = "", .objectQuits = 1},
        Row{.name = "NoSuite", .version = 0, .result = 0, .ended = "", .waits = 0},
        Row{.name = "StartFails", .startFails = true, .result = 0, .ended = "", .waits = 0},
        Row{.name = "Idle",
            .runsForMs = -1,
            .working = FakeOfficeRun::Idle,
            .result = 0,
            .waits = 600},
        Row{.name = "BusyPastTheLimit",
            .version = 0x00080000,
            .runsForMs = -1,
            .result = 0,
            .ended = "",
            .objectQuits = 1,
            .waits = LimitSlices},
        Row{.name = "UnseenPastTheLimit",
            .runsForMs = -1,
            .working = FakeOfficeRun::Unseen,
            .result = 0,
            .waits = LimitSlices},
        // A large document: five minutes at work is more than idle or two minutes allow.
        Row{.name = "LargeDocumentGetsItsTime", .runsForMs = 300000, .megabytes = 8, .waits = 3000},
        Row{.name = "ReportsFailure", .runsForMs = 200, .succeeds = false, .result = 0},
        Row{.name = "WritesNothing", .writesCopy = false, .result = 0}),
    [](const ::testing::TestParamInfo<Row>& row) { return std::string(row.param.name); });

// A socket named as LibreOffice names the one it answers a second start on, in /tmp where it
// puts it. Closed, it is what a suite ended by force leaves; open, it is a live suite's.
class OfficeSocket final
{
public:
    OfficeSocket(const QString& tag, bool listening)
        : m_path(QStringLiteral("/tmp/OSL_PIPE_%1_SingleOfficeIPC_test%2%3")
                     .arg(::getuid())
                     .arg(::getpid())
                     .arg(tag))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray name = QFile::encodeName(m_path);
        std::copy(name.cbegin(), name.cend(), address.sun_path);
        m_socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
        if (listening) {
            ::listen(m_socket, 1);
        } else {
            ::close(m_socket);
            m_socket = -1;
        }
    }
    ~OfficeSocket()
    {
        if (m_socket >= 0)
            ::close(m_socket);
        QFile::remove(m_path);
    }
    OfficeSocket(const OfficeSocket&) = delete;
    OfficeSocket& operator=(const OfficeSocket&) = delete;
    bool Exists() const { return QFileInfo(m_path).exists() || QFileInfo(m_path).isSymLink(); }

private:
    QString m_path;
    int m_socket = -1;
};

// The LibreOffice class with the suite played by the fake launcher: a start that finds its
// profile without a user folder makes one and asks for a restart, as LibreOffice does; then it
// ends with `exitCode`, or hangs.
class LibreOfficeStarts : public ::testing::Test
{
protected:
    void SetUp() override
    {
        launcher.programs.insert(Program, {});
        launcher.onStart = [this](const LaunchRequest& request) {
            const QString profile =
                QUrl(request.arguments.filter(QStringLiteral("UserInstallation=")).value(0).mid(22))
                    .toLocalFile();
            const bool fresh = !QFileInfo::exists(profile + QStringLiteral("/user"));
            QDir().mkpath(profile + QStringLiteral("/user"));
            launcher.programs[Program] = {hangs ? -1 : 1, fresh ? 81 : exitCode};
            if (exitCode != 0 && !left) {
                left = std::make_unique<OfficeSocket>(QStringLiteral("left"), false);
                live = std::make_unique<OfficeSocket>(QStringLiteral("live"), true);
            }
        };
    }
    std::unique_ptr<OfficeProcess> Start(const QString& work)
    {
        QDir(dir.path()).mkpath(work + QStringLiteral("/out"));
        return suite->StartConversion(
            Program, {dir.filePath(Name), dir.filePath(work + "/out"), dir.filePath(work)});
    }
    QString Url(const QString& name) const
    {
        return QUrl::fromLocalFile(dir.filePath(name)).toString(QUrl::FullyEncoded);
    }
    bool UsedProfile(const QString& profile) const
    {
        return launcher.requests.last().arguments.contains("-env:UserInstallation=" + Url(profile));
    }

    QTemporaryDir dir;
    FakeLauncher launcher;
    std::unique_ptr<OfficeSuite> suite = CreateLibreOffice(launcher, dir.filePath("cache"));
    bool hangs = false;
    int exitCode = 0;
    // Made while a failing suite runs: the one it leaves, and another suite's that is answered.
    std::unique_ptr<OfficeSocket> left;
    std::unique_ptr<OfficeSocket> live;
};

TEST_F(LibreOfficeStarts, TheKeptProfileIsMadeOnceAndThenEachConversionIsOneStart)
{
    for (const QString& work : {QStringLiteral("w1"), QStringLiteral("w2")}) {
        const auto process = Start(work);
        ASSERT_TRUE(process && process->WaitForEnd(10000));
        EXPECT_TRUE(process->Succeeded());
        EXPECT_TRUE(UsedProfile(QStringLiteral("cache/office-profile")));
    }
    ASSERT_EQ(launcher.requests.size(), 3) << "a restart for the new profile, then one start each";
    const LaunchRequest& last = launcher.requests.last();
    EXPECT_EQ(last.arguments.value(0), QStringLiteral("--headless"));
    EXPECT_EQ(last.arguments.mid(last.arguments.size() - 6),
              (QStringList{QStringLiteral("--infilter=Rich Text Format"),
                           QStringLiteral("--convert-to"), QStringLiteral("doc:MS Word 97"),
                           QStringLiteral("--outdir"), Url(QStringLiteral("w2/out")), Url(Name)}));
    // The suite's own temporary files go to the job's folder, not the user's.
    EXPECT_TRUE(last.environment.contains("TMPDIR=" + dir.filePath(QStringLiteral("w2/tmp"))));
    EXPECT_TRUE(QFileInfo(dir.filePath(QStringLiteral("w2/tmp"))).isDir());
}

TEST_F(LibreOfficeStarts, AFailureDiscardsTheKeptProfileAndMeanwhileOthersGetTheirOwn)
{
    const OfficeSocket before(QStringLiteral("before"), false);
    exitCode = 1;
    Start(QStringLiteral("w1"))->WaitForEnd(10000);
    EXPECT_TRUE(UsedProfile(QStringLiteral("cache/office-profile")));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("cache/office-profile"))));
    // Only the socket the failed suite left goes; one that was there before and one that is
    // answered on stay.
    ASSERT_TRUE(left && live);
    EXPECT_FALSE(left->Exists());
    EXPECT_TRUE(live->Exists());
    EXPECT_TRUE(before.Exists());
    hangs = true;
    const auto hanging = Start(QStringLiteral("w2"));
    EXPECT_FALSE(hanging->WaitForEnd(300));
    hangs = false;
    exitCode = 0;
    EXPECT_TRUE(Start(QStringLiteral("w3"))->WaitForEnd(10000));
    EXPECT_TRUE(UsedProfile(QStringLiteral("w3/profile")));
    hanging->Quit();
    EXPECT_TRUE(hanging->WaitForEnd(0) && !hanging->Succeeded());
    launcher.startError = ENOENT;
    EXPECT_FALSE(Start(QStringLiteral("w4")));
}

TEST(OfficeTimeLimit, LeavesTheSuiteThreeTimesTheProcessorTimeItNeeds)
{
    // LibreOffice 7.4's processor time for the engine's text boxes of 300, 1,000 and 3,000
    // pages, measured on one core of a 2 GHz AMD EPYC.
    const std::pair<qint64, qint64> needed[] = {
        {1534823, 17000}, {5114003, 237000}, {15341179, 2763000}};
    for (const auto& [bytes, milliseconds] : needed)
        EXPECT_GE(OfficeTimeLimitMs(bytes), 3 * milliseconds) << bytes;
    // A small document's suite that runs on and on has hung all the same.
    EXPECT_LE(OfficeTimeLimitMs(100000), 3 * 60000);
}

// The real office suite on a real file leaves a Word document in place, nothing in the
// temporary folder and its profile for the next run.
TEST(RealOffice, WritesAWordDocumentInPlaceAndLeavesNothingBehind)
{
    const auto launcher = CreateProcessLauncher();
    const auto suite = CreateLibreOffice(*launcher, OfficeProfileHome());
    if (suite->FindProgram().isEmpty())
        GTEST_SKIP() << "no office suite installed";
    QTemporaryDir targetDir;
    const QString target = targetDir.filePath(Name);
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(EngineOutput) > 0);
    file.close();
    FakeEnvironment env;
    env.state.OutputPath = target;
    const auto library = LoadProcessUtilityLibrary(QStringLiteral(VELMORA_APP_DIR));
    AppContext context{env.state,       env.store.Factory(), env.help,   *library, env.geometry,
                       VELMORA_APP_DIR, *launcher,           env.opener, *suite,   env.clock};
    const qint32 before = library->GetProcessCount(OfficeProcessName);
    const QStringList tempBefore = Entries(QDir::tempPath());

    EXPECT_EQ(FinishWithWord(context), -1);

    EXPECT_TRUE(ReadAll(target).startsWith(Converted));
    EXPECT_EQ(Entries(targetDir.path()), QStringList{Name});
    EXPECT_EQ(Entries(QDir::tempPath()), tempBefore);
    EXPECT_TRUE(QFileInfo::exists(OfficeProfileHome() + QStringLiteral("/office-profile/user")));
    EXPECT_EQ(library->GetProcessCount(OfficeProcessName), before);
}

}  // namespace
