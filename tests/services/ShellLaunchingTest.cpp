// Starting programs and opening documents as the conversion does: the shell codes and their
// messages, the wait that keeps the dialogs alive, and, with real programs, arguments that
// arrive verbatim, programs that are collected, and documents that open in their application
// without being waited for.

#include "RecorderSupport.h"

#include "services/ShellLaunching.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <cerrno>

#include <unistd.h>

namespace {

constexpr qint16 ReportOn = -1;
constexpr qint16 ReportOff = 0;

// Children of this process that have ended and were never collected, once a released program
// that is ending just now has had a moment to be collected.
QStringList SettledZombies()
{
    QStringList zombies;
    for (int round = 0; round < 150; ++round) {
        zombies.clear();
        const QString self = QString::number(::getpid());
        for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
            QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
            if (!stat.open(QIODevice::ReadOnly))
                continue;
            const QString text = QString::fromLatin1(stat.readAll());
            const QStringList fields = text.mid(text.lastIndexOf(u')') + 2).split(u' ');
            if (fields.size() >= 2 && fields.at(0) == QStringLiteral("Z") && fields.at(1) == self)
                zombies.append(pid);
        }
        if (zombies.isEmpty())
            break;
        QThread::msleep(20);
    }
    return zombies;
}

TEST(ShellLaunching, EveryFailureHasItsCodeAndItsMessageWhenAskedFor)
{
    struct Row
    {
        const char* what;
        QString verb;
        QString file;
        int error;  // what the system says to the start
        qint32 code;
        const char* message;
    };
    const QString missing = QDir::tempPath() + QStringLiteral("/engine");
    const QList<Row> rows = {
        {"missing program", OpenVerb, missing, ENOENT, 2, "engine is not found!"},
        {"quoted", OpenVerb, u'"' + missing + u'"', ENOENT, 2, "engine\" is not found!"},
        {"bare name", OpenVerb, QStringLiteral("nothing-here"), ENOENT, 2,
         "nothing-here is not found!"},
        {"missing folder", OpenVerb, QStringLiteral("/no/such/folder/x"), ENOENT, 3,
         "/no/such/folder/x is not found!"},
        {"not a program", OpenVerb, missing, EACCES, 5, "engine is denied!"},
        {"no memory", OpenVerb, missing, ENOMEM, 8,
         "There was not enough memory to complete the operation!"},
        {"bad format", OpenVerb, missing, ENOEXEC, 11,
         "Unable to call the host application for opening (11)"},
        {"busy", OpenVerb, missing, ETXTBSY, 32,
         "Unable to call the host application for opening (32)"},
        {"print verb", QStringLiteral("print"), missing, 0, 31,
         "There is no application associated with the given file name extension for "
         "printing!\n\nPlease open the file manually and print from there."},
        {"PRINT is no print verb", QStringLiteral("PRINT"), missing, 0, 31,
         "There is no application associated with the given file name extension!"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        FakeLauncher launcher;
        launcher.startError = row.error;
        ProcessHandle handle;
        MessageBoxWatch quiet;
        EXPECT_EQ(
            LaunchProcess(launcher, nullptr, row.verb, row.file, {}, ShowNormal, handle, ReportOff),
            row.code);
        ProcessPendingEvents();
        EXPECT_EQ(quiet.Count(), 0);
        EXPECT_FALSE(handle);
        EXPECT_EQ(launcher.requests.size(), row.error ? 1 : 0) << "only open starts a program";

        SeenMessage seen;
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        EXPECT_EQ(LaunchAndWait(launcher, nullptr, row.verb, row.file, {}, ShowNormal), row.code);
        EXPECT_TRUE(seen.text.endsWith(QString::fromUtf8(row.message))) << seen.text.toStdString();
        EXPECT_EQ(seen.icon, QMessageBox::Critical);
    }
}

TEST(ShellLaunching, WaitingPumpsEventsBetweenSlicesUntilTheProgramEnds)
{
    struct Row
    {
        qint32 waits;
        bool pumped;
    };
    // A program that has ended at the first look is noticed without pumping.
    for (const Row row : {Row{1, false}, Row{4, true}}) {
        FakeLauncher launcher;
        launcher.programs.insert(QStringLiteral("/opt/velmora/engine"), {row.waits, 0});
        bool pumped = false;
        QTimer::singleShot(0, [&pumped] { pumped = true; });
        EXPECT_EQ(LaunchAndWait(launcher, nullptr, OpenVerb, QStringLiteral("/opt/velmora/engine"),
                                {QStringLiteral("a b")}, ShowNormal),
                  42);
        EXPECT_EQ(pumped, row.pumped) << row.waits;
        ASSERT_EQ(launcher.requests.size(), 1);
        EXPECT_EQ(launcher.requests.first().arguments, QStringList{QStringLiteral("a b")});
        ProcessPendingEvents();
    }
}

TEST(ShellLaunching, OpeningADocumentGivesTheCodeOfWhatHappened)
{
    QTemporaryDir dir;
    const QString document = dir.filePath(QStringLiteral("result.doc"));
    QFile(document).open(QIODevice::WriteOnly);
    struct Row
    {
        const char* what;
        QString path;
        DocumentOpener::Result result;
        const char* message;  // empty: opened
    };
    const QList<Row> rows = {
        {"opened", document, DocumentOpener::Result::Opened, ""},
        {"no application", document, DocumentOpener::Result::NoAssociation,
         "There is no application associated with the given file name extension!"},
        {"application failed", document, DocumentOpener::Result::StartFailed,
         "Unable to call the host application for opening (1)"},
        {"missing", dir.filePath(QStringLiteral("gone.doc")), DocumentOpener::Result::Opened,
         "/gone.doc is not found!"},
        {"missing folder", dir.filePath(QStringLiteral("gone/x.doc")),
         DocumentOpener::Result::Opened, "/gone/x.doc is not found!"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        FakeOpener opener;
        opener.result = row.result;
        MessageBoxWatch seen;
        OpenDocument(opener, nullptr, row.path, ReportOn);
        ProcessPendingEvents();
        if (QByteArray(row.message).isEmpty()) {
            EXPECT_EQ(seen.Count(), 0);
            EXPECT_EQ(opener.opened, QStringList{document});
        } else {
            ASSERT_EQ(seen.Count(), 1);
            EXPECT_TRUE(seen.Texts().first().endsWith(QString::fromUtf8(row.message)))
                << seen.Texts().first().toStdString();
        }
        MessageBoxWatch quiet;
        OpenDocument(opener, nullptr, row.path, ReportOff);
        ProcessPendingEvents();
        EXPECT_EQ(quiet.Count(), 0);
    }
}

// The real launcher, with programs that stand where a shell would trip.
TEST(RealPrograms, GetTheirArgumentsVerbatimAndAreCollectedWhenLetGo)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("with blanks $(x); 'q'"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString program = folder + QStringLiteral("/-rec order");
    ASSERT_TRUE(QFile::copy(RecorderProgram(), program));
    const QString record = dir.filePath(QStringLiteral("record"));
    qputenv("VELMORA_RECORD_FILE", QFile::encodeName(record));
    const auto launcher = CreateProcessLauncher();

    const QStringList arguments = {
        QStringLiteral("a b"),   QStringLiteral("-dash"), QStringLiteral("$(touch pwned)"),
        QStringLiteral(";"),     QStringLiteral("\"q\""), QString(),
        QStringLiteral("`id` *")};
    EXPECT_EQ(
        LaunchAndWait(*launcher, nullptr, OpenVerb, u'"' + program + u'"', arguments, ShowNormal),
        42);
    const std::optional<Recorded> seen = ReadRecord(record);
    ASSERT_TRUE(seen.has_value()) << "the wait ended before the program did";
    EXPECT_EQ(seen->arguments, arguments);
    EXPECT_FALSE(QFile::exists(QStringLiteral("pwned")));

    // Real start failures give their codes.
    const QString garbage = dir.filePath(QStringLiteral("garbage"));
    QFile file(garbage);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(64, '\x01'));
    file.close();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    ProcessHandle none;
    for (const auto& [path, code] :
         {std::pair{dir.filePath("missing"), 2}, std::pair{dir.filePath("gone/missing"), 3},
          std::pair{dir.path(), 5}, std::pair{garbage, 11}})
        EXPECT_EQ(
            LaunchProcess(*launcher, nullptr, OpenVerb, path, {}, ShowNormal, none, ReportOff),
            code)
            << path.toStdString();

    // A program let go of while it runs, as a skipped preview is, goes on by itself and is
    // collected once it ends.
    QFile::remove(record);
    qputenv("VELMORA_RECORD_DELAY_MS", "300");
    ProcessHandle slow;
    ASSERT_EQ(LaunchProcess(*launcher, nullptr, OpenVerb, RecorderProgram(),
                            {QStringLiteral("late")}, ShowNormal, slow, ReportOn),
              42);
    EXPECT_FALSE(slow->WaitForEnd(0));
    slow.reset();
    ASSERT_TRUE(ReadRecord(record, 10000).has_value()) << "letting go ended the program";
    EXPECT_EQ(SettledZombies(), QStringList());
    qunsetenv("VELMORA_RECORD_FILE");
    qunsetenv("VELMORA_RECORD_DELAY_MS");
}

// The desktop's real opener on a desktop of the test's own: .doc files belong to the argument
// recorder, and nothing handles a file of zero bytes of unknown type. GIO reads the association
// database once, so it is written before the first document is opened.
TEST(RealDesktop, DocumentsOpenInTheirApplicationWhichIsNotWaitedFor)
{
    const QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    const QString data = config + QStringLiteral("/../data");
    qputenv("XDG_DATA_HOME", QFile::encodeName(data));
    QDir().mkpath(data + QStringLiteral("/applications"));
    QDir().mkpath(config);
    QFile entry(data + QStringLiteral("/applications/velmora-test-viewer.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Viewer\nExec=" +
                QFile::encodeName(RecorderProgram()) + " %f\nMimeType=application/msword;\n");
    entry.close();
    QFile associations(config + QStringLiteral("/mimeapps.list"));
    ASSERT_TRUE(associations.open(QIODevice::WriteOnly));
    associations.write("[Default Applications]\napplication/msword=velmora-test-viewer.desktop\n");
    associations.close();

    QTemporaryDir dir;
    const QString document = dir.filePath(QStringLiteral("-My $(report);.doc"));
    QFile documentFile(document);
    ASSERT_TRUE(documentFile.open(QIODevice::WriteOnly));
    documentFile.write("doc");  // an empty file would be known by its emptiness, not its name
    documentFile.close();
    const QString unknown = dir.filePath(QStringLiteral("data.vlmunknown"));
    QFile unknownFile(unknown);
    ASSERT_TRUE(unknownFile.open(QIODevice::WriteOnly));
    unknownFile.write(QByteArray(64, '\0'));
    unknownFile.close();

    const auto opener = CreateDocumentOpener();
    const QString record = dir.filePath(QStringLiteral("record"));
    qputenv("VELMORA_RECORD_FILE", QFile::encodeName(record));
    // The application takes its time: the call must be back long before it is done.
    qputenv("VELMORA_RECORD_DELAY_MS", "1500");
    EXPECT_EQ(opener->Open(document), DocumentOpener::Result::Opened);
    EXPECT_FALSE(QFile::exists(record)) << "the application was waited for";
    const std::optional<Recorded> seen = ReadRecord(record, 20000);
    ASSERT_TRUE(seen.has_value());
    EXPECT_EQ(seen->arguments, QStringList{document});
    EXPECT_EQ(opener->Open(unknown), DocumentOpener::Result::NoAssociation);
    qunsetenv("VELMORA_RECORD_FILE");
    qunsetenv("VELMORA_RECORD_DELAY_MS");
}

}  // namespace
