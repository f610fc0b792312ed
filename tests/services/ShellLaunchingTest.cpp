#include "RecorderSupport.h"

#include "platform/Shell.h"
#include "services/ShellLaunching.h"
#include "support/ModalDriver.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

constexpr qint16 ReportOn = -1;
constexpr qint16 ReportOff = 0;
const auto Unset = static_cast<ProcessHandle>(777);

// Counts (and closes) any modal window that comes up where none should.
class UnexpectedModalWatch final
{
public:
    UnexpectedModalWatch()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            if (auto* modal = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                ++m_seen;
                modal->reject();
            }
        });
        m_timer.start(10);
    }
    int seen() const { return m_seen; }

private:
    QTimer m_timer;
    int m_seen = 0;
};

// Children of this process that have ended and were never collected.
QStringList zombieChildren()
{
    QStringList zombies;
    const QString self = QString::number(::getpid());
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& pid : entries) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromLatin1(stat.readAll());
        const QStringList fields = text.mid(text.lastIndexOf(u')') + 2).split(u' ');
        if (fields.size() >= 2 && fields.at(0) == QStringLiteral("Z") && fields.at(1) == self)
            zombies.append(pid);
    }
    return zombies;
}

// Children that are still zombies once the background reaper has had a moment: a released
// program of an earlier test may be ending just now.
QStringList settledZombies()
{
    QElapsedTimer clock;
    clock.start();
    while (!zombieChildren().isEmpty() && clock.elapsed() < 3000)
        QThread::msleep(20);
    return zombieChildren();
}

class ShellLaunchingTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_previousDirectory = QDir::currentPath();
    }
    void TearDown() override
    {
        QDir::setCurrent(m_previousDirectory);
        qunsetenv("VELMORA_RECORD_FILE");
        qunsetenv("VELMORA_RECORD_DELAY_MS");
        qunsetenv("VELMORA_RECORD_EXIT");
    }

    QString path(const QString& name) const { return m_dir.filePath(name); }

    QString writeFile(const QString& name, const QByteArray& content,
                      QFile::Permissions permissions)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        file.setPermissions(permissions);
        return file.fileName();
    }

    void recordInto(const QString& file, int delayMs = 0, int exitCode = 0)
    {
        qputenv("VELMORA_RECORD_FILE", QFile::encodeName(file));
        qputenv("VELMORA_RECORD_DELAY_MS", QByteArray::number(delayMs));
        qputenv("VELMORA_RECORD_EXIT", QByteArray::number(exitCode));
    }

    QTemporaryDir m_dir;
    QString m_previousDirectory;
};

TEST_F(ShellLaunchingTest, LaunchGivesTheCodeOfWhatHappened)
{
    const QFile::Permissions readWrite = QFile::ReadOwner | QFile::WriteOwner;
    const QString plain = writeFile(QStringLiteral("plain.txt"), "text", readWrite);
    const QString garbage = writeFile(QStringLiteral("garbage.bin"), QByteArray(64, '\x01'),
                                      readWrite | QFile::ExeOwner);
    struct Row
    {
        QString verb;
        QString file;
        quint32 code;  // Success for a start
    };
    const QList<Row> rows = {
        {QStringLiteral("open"), QStringLiteral("/bin/true"), ShellCodes::Success},
        {QStringLiteral("open"), QStringLiteral("\"/bin/true\""), ShellCodes::Success},
        {QString(), QStringLiteral("true"), ShellCodes::Success},
        {QStringLiteral("open"), path(QStringLiteral("missing")), 2},
        {QStringLiteral("open"), path(QStringLiteral("no folder/missing")), 3},
        {QStringLiteral("open"), QStringLiteral("velmora-no-such-program"), 2},
        {QStringLiteral("open"), QString(), 2},
        {QStringLiteral("open"), plain, 5},
        {QStringLiteral("open"), m_dir.path(), 5},
        {QStringLiteral("open"), garbage, 11},
        {QStringLiteral("print"), QStringLiteral("/bin/true"), 31},
        {QStringLiteral("OPEN"), QStringLiteral("/bin/true"), 31},
    };
    UnexpectedModalWatch watch;
    for (const Row& row : rows) {
        ProcessHandle handle = Unset;
        const qint32 code =
            LaunchProcess(nullptr, row.verb, row.file, QString(), ShowNormal, handle, ReportOff);
        if (row.code == ShellCodes::Success) {
            EXPECT_GT(code, 32) << row.file.toStdString();
            ASSERT_NE(handle, Unset) << row.file.toStdString();
            ASSERT_NE(handle, ProcessHandle::None);
            EXPECT_EQ(WaitForSingleObject(handle, 5000), WaitResults::Object0);
            EXPECT_TRUE(CloseHandle(handle));
        } else {
            EXPECT_EQ(code, static_cast<qint32>(row.code)) << row.file.toStdString();
            EXPECT_EQ(handle, Unset) << "a failed launch leaves the handle alone";
        }
    }
    EXPECT_EQ(watch.seen(), 0) << "nothing is reported with the report off";
}

TEST_F(ShellLaunchingTest, ArgumentsReachTheProgramVerbatimWithoutAShell)
{
    // The program itself lies where a shell would trip: blanks, quotes and shell syntax.
    const QString folder = path(QStringLiteral("with blanks $(x); 'q'"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString program = folder + QStringLiteral("/-rec order");
    ASSERT_TRUE(QFile::copy(RecorderProgram(), program));
    QDir::setCurrent(m_dir.path());
    const QString record = path(QStringLiteral("record"));
    recordInto(record);

    // clang-format off
    const QString parameters = QString::fromUtf8(
        R"x("a b" -dash "$(touch pwned)" ; 'single' "semi;colon" back\slash "" `id` *  "last one)x");
    // clang-format on
    const qint32 code = LaunchAndWait(
        nullptr, OpenVerb, QLatin1Char('"') + program + QLatin1Char('"'), parameters, ShowNormal);
    ASSERT_GT(code, 32);

    const std::optional<Recorded> seen = ReadRecord(record);
    ASSERT_TRUE(seen.has_value()) << "the program did not run to its end before the return";
    const QStringList expected = {QStringLiteral("a b"),
                                  QStringLiteral("-dash"),
                                  QStringLiteral("$(touch pwned)"),
                                  QStringLiteral(";"),
                                  QStringLiteral("'single'"),
                                  QStringLiteral("semi;colon"),
                                  QStringLiteral("back\\slash"),
                                  QString(),
                                  QStringLiteral("`id`"),
                                  QStringLiteral("*"),
                                  QStringLiteral("last one")};
    EXPECT_EQ(seen->arguments, expected);
    EXPECT_EQ(seen->workingDirectory, m_dir.path()) << "the child starts in our directory";
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("pwned"))));
}

TEST_F(ShellLaunchingTest, WaitingKeepsTheEventsFlowingUntilTheProgramEnds)
{
    const QString record = path(QStringLiteral("record"));
    recordInto(record, 300);
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
    ticker.start(20);

    QElapsedTimer clock;
    clock.start();
    const qint32 code =
        LaunchAndWait(nullptr, OpenVerb, RecorderProgram(), QStringLiteral("x"), ShowNormal);
    const qint64 elapsed = clock.elapsed();

    EXPECT_GT(code, 32);
    EXPECT_GE(elapsed, 300);
    EXPECT_TRUE(QFile::exists(record)) << "returned before the program ended";
    EXPECT_GE(ticks, 3) << "the dialogs would have frozen";
    EXPECT_TRUE(settledZombies().isEmpty());
}

TEST_F(ShellLaunchingTest, AProgramThatEndsInTheFirstSliceIsNoticedWithoutPumping)
{
    bool pumped = false;
    QTimer::singleShot(0, [&pumped] { pumped = true; });
    QElapsedTimer clock;
    clock.start();
    EXPECT_GT(LaunchAndWait(nullptr, OpenVerb, QStringLiteral("/bin/true"), QString(), ShowNormal),
              32);
    const qint64 elapsed = clock.elapsed();
    if (elapsed >= 100)
        GTEST_SKIP() << "the machine was too busy to end /bin/true within one slice";
    EXPECT_FALSE(pumped);
    ProcessPendingEvents();
}

TEST_F(ShellLaunchingTest, AFailedLaunchIsReportedAndNotWaitedFor)
{
    struct Row
    {
        QString file;
        QString verb;
        qint32 code;
        QString message;
    };
    const QString missing = path(QStringLiteral("engine"));
    const QList<Row> rows = {
        {missing, OpenVerb, 2, missing + QStringLiteral(" is not found!")},
        {QLatin1Char('"') + missing + QLatin1Char('"'), OpenVerb, 2,
         QLatin1Char('"') + missing + QStringLiteral("\" is not found!")},
        {QStringLiteral("/bin/true"), QStringLiteral("print"), 31,
         QStringLiteral("There is no application associated with the given file name extension "
                        "for printing!\n\nPlease open the file manually and print from there.")},
    };
    for (const Row& row : rows) {
        SeenMessage seen;
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        EXPECT_EQ(LaunchAndWait(nullptr, row.verb, row.file, QString(), ShowNormal), row.code);
        EXPECT_TRUE(seen.shown);
        EXPECT_EQ(seen.text, row.message);
        EXPECT_EQ(seen.icon, QMessageBox::Critical);
    }
}

TEST_F(ShellLaunchingTest, AHandleIsTheCallersUntilClosedAndTheProgramOutlivesIt)
{
    EXPECT_EQ(WaitForSingleObject(ProcessHandle::None, 10), WaitResults::Failed);
    EXPECT_FALSE(CloseHandle(ProcessHandle::None));

    // A program that ends while we hold the handle: the end is seen every time we ask.
    ProcessHandle quick = ProcessHandle::None;
    ASSERT_GT(LaunchProcess(nullptr, OpenVerb, QStringLiteral("/bin/true"), QString(), ShowNormal,
                            quick, ReportOn),
              32);
    EXPECT_EQ(WaitForSingleObject(quick, 5000), WaitResults::Object0);
    EXPECT_EQ(WaitForSingleObject(quick, 0), WaitResults::Object0);
    EXPECT_TRUE(CloseHandle(quick));
    EXPECT_EQ(WaitForSingleObject(quick, 0), WaitResults::Failed);
    EXPECT_FALSE(CloseHandle(quick));

    // Let go of a program while it runs, as a skipped preview does: it goes on by itself.
    const QString record = path(QStringLiteral("record"));
    recordInto(record, 400);
    ProcessHandle slow = ProcessHandle::None;
    ASSERT_GT(LaunchProcess(nullptr, OpenVerb, RecorderProgram(), QStringLiteral("late"),
                            ShowNormal, slow, ReportOn),
              32);
    EXPECT_EQ(WaitForSingleObject(slow, 50), WaitResults::Timeout);
    EXPECT_TRUE(CloseHandle(slow));
    const std::optional<Recorded> seen = ReadRecord(record, 5000);
    ASSERT_TRUE(seen.has_value()) << "closing the handle ended the program";
    EXPECT_EQ(seen->arguments, QStringList{QStringLiteral("late")});

    // The released program must still be collected once it ends.
    EXPECT_EQ(settledZombies(), QStringList());
}

// A desktop of the test's own: .doc files belong to the argument recorder, and nothing handles
// files of an unknown type (zero bytes, which no sniffing takes for a known format). GIO reads the association database once, so it is written before
// the first document is opened.
class DocumentOpeningTest : public ShellLaunchingTest
{
protected:
    static void SetUpTestSuite()
    {
        const QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
        const QString data = config + QStringLiteral("/../data");
        qputenv("XDG_DATA_HOME", QFile::encodeName(data));
        QDir().mkpath(data + QStringLiteral("/applications"));
        QDir().mkpath(config);
        QFile entry(data + QStringLiteral("/applications/velmora-test-viewer.desktop"));
        EXPECT_TRUE(entry.open(QIODevice::WriteOnly));
        entry.write("[Desktop Entry]\nType=Application\nName=Viewer\nExec=" +
                    QFile::encodeName(RecorderProgram()) + " %f\nMimeType=application/msword;\n");
        QFile associations(config + QStringLiteral("/mimeapps.list"));
        EXPECT_TRUE(associations.open(QIODevice::WriteOnly));
        associations.write(
            "[Default Applications]\napplication/msword=velmora-test-viewer.desktop\n");
    }
};

TEST_F(DocumentOpeningTest, DocumentsOpenInTheirApplicationWhichIsNotWaitedFor)
{
    QDir::setCurrent(m_dir.path());
    // A name that an application could take for an option, and a shell for a command.
    const QString document = writeFile(QStringLiteral("-My $(report);.doc"), "doc",
                                       QFile::ReadOwner | QFile::WriteOwner);
    const QString relative = QStringLiteral("-My $(report);.doc");
    const QString unknown = writeFile(QStringLiteral("data.vlmunknown"), QByteArray(64, '\0'),
                                      QFile::ReadOwner | QFile::WriteOwner);
    const QString unreadable = writeFile(QStringLiteral("locked.doc"), "doc", QFile::WriteOwner);
    struct Row
    {
        const char* what;
        QString verb;
        QString file;
        quint32 code;
    };
    const QList<Row> rows = {
        {"opened", OpenVerb, relative, ShellCodes::Success},
        {"opened, quoted", OpenVerb, QLatin1Char('"') + document + QLatin1Char('"'),
         ShellCodes::Success},
        {"no application for the type", OpenVerb, unknown, ShellCodes::NoAssociation},
        {"missing document", OpenVerb, path(QStringLiteral("gone.doc")), 2},
        {"missing folder", OpenVerb, path(QStringLiteral("gone/x.doc")), 3},
        {"empty name", OpenVerb, QString(), 2},
        {"print verb", QStringLiteral("print"), relative, 31},
    };
    int round = 0;
    for (const Row& row : rows) {
        const QString record = path(QStringLiteral("record%1").arg(++round));
        // The application takes its time: the call must be back long before it is done.
        recordInto(record, 1500);
        const quint32 code = ShellExecute(nullptr, row.verb, row.file, QString(), ShowNormal);
        EXPECT_EQ(code, row.code) << row.what;
        EXPECT_FALSE(QFile::exists(record)) << row.what << ": the application was waited for";
        const std::optional<Recorded> seen = ReadRecord(record, code == 42 ? 20000 : 0);
        EXPECT_EQ(seen.has_value(), code == 42) << row.what;
        if (seen) {
            EXPECT_EQ(seen->arguments, QStringList{document}) << row.what;
        }
    }
    if (::geteuid() != 0) {
        EXPECT_EQ(ShellExecute(nullptr, OpenVerb, unreadable, QString(), ShowNormal), 5u);
    }
}

TEST_F(DocumentOpeningTest, OpenDocumentReportsFailuresOnlyWhenAsked)
{
    const QString unknown = writeFile(QStringLiteral("result.vlmunknown"), QByteArray(64, '\0'),
                                      QFile::ReadOwner | QFile::WriteOwner);
    const QString missing = path(QStringLiteral("missing.doc"));

    struct Row
    {
        QString file;
        qint16 report;
        QString message;  // empty: no message
    };
    const QList<Row> rows = {
        {unknown, ReportOn,
         QStringLiteral("There is no application associated with the given file name extension!")},
        {missing, ReportOn, missing + QStringLiteral(" is not found!")},
        {unknown, ReportOff, QString()},
        {missing, ReportOff, QString()},
    };
    for (const Row& row : rows) {
        if (row.message.isEmpty()) {
            UnexpectedModalWatch watch;
            OpenDocument(nullptr, row.file, row.report);
            ProcessPendingEvents();
            EXPECT_EQ(watch.seen(), 0) << row.file.toStdString();
            continue;
        }
        SeenMessage seen;
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        OpenDocument(nullptr, row.file, row.report);
        EXPECT_EQ(seen.text, row.message);
        EXPECT_EQ(seen.icon, QMessageBox::Critical);
    }
    EXPECT_TRUE(settledZombies().isEmpty());
}

}  // namespace
