// Starting programs and opening documents as the conversion does: the shell codes and that they
// are told, and, with real programs, arguments that arrive verbatim, programs collected once let
// go, and documents that open in their application without being waited for.

#include "services/ShellLaunching.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include "TestPaths.h"

#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/wait.h>

namespace {

// A program of the tests that writes the arguments it got to VELMORA_RECORD_FILE, once the file
// that VELMORA_RECORD_HOLD names exists when that is set.
const QString Recorder = QStringLiteral(VELMORA_TEST_BINARY_DIR "/services_argv_recorder");

// The arguments recorded at `file`, once it appears within `timeoutMs`.
std::optional<QStringList> Recorded(const QString& file, int timeoutMs)
{
    for (int waited = 0; !QFile::exists(file); waited += 10) {
        if (waited >= timeoutMs)
            return std::nullopt;
        QThread::msleep(10);
    }
    QFile record(file);
    QStringList arguments =
        QString::fromUtf8(record.open(QIODevice::ReadOnly) ? record.readAll() : "").split(QChar());
    arguments.removeLast();  // every argument ends in a NUL
    return arguments;
}

// Each failure has its code, and its message when asked for: the English text, or in Japanese
// another one about the same file.
TEST(ShellLaunching, AStartThatFailsGivesItsCodeAndIsToldWhenAskedTo)
{
    const QString missing = QDir::tempPath() + QStringLiteral("/engine");
    const char* const noPrinter = "There is no application associated with the given file name "
                                  "extension for printing!\n\nPlease open the file manually and "
                                  "print from there.";
    const std::tuple<QString, QString, int, qint32, const char*> rows[] = {
        // verb, program, what the system says to the start, code, message
        {OpenVerb, u'"' + missing + u'"', ENOENT, 2, "<file> is not found!"},
        {OpenVerb, QStringLiteral("nothing-here"), ENOENT, 2, "<file> is not found!"},
        {OpenVerb, QStringLiteral("/no/such/folder/x"), ENOENT, 3, "<file> is not found!"},
        {OpenVerb, missing, EACCES, 5, "Access to <file> is denied!"},
        {QString(), missing, ENOMEM, 8, "There was not enough memory to complete the operation!"},
        {OpenVerb, missing, ETXTBSY, 32, "Unable to call the host application for opening (32)"},
        {OpenVerb, missing, EIO, 1, "Unable to call the host application for opening (1)"},
        {QStringLiteral("print"), missing, 0, 31, noPrinter},
        {QStringLiteral("PRINT"), missing, 0, 31,
         "There is no application associated with the given file name extension!"},
    };
    const bool japanese = qEnvironmentVariable("LANG").startsWith(QStringLiteral("ja"));
    for (const auto& [verb, file, error, code, message] : rows) {
        SCOPED_TRACE(file.toStdString() + " " + std::to_string(error));
        FakeLauncher launcher;
        launcher.startError = error;
        ProcessHandle handle;
        MessageBoxWatch quiet;
        EXPECT_EQ(LaunchProcess(launcher, nullptr, verb, file, {}, ShowNormal, handle, 0), code);
        ProcessPendingEvents();
        EXPECT_EQ(quiet.Count(), 0);
        EXPECT_FALSE(handle);
        ASSERT_EQ(launcher.requests.size(), error ? 1 : 0) << "only open starts a program";
        EXPECT_FALSE(error && launcher.requests.first().program.contains(u'"'));

        SeenMessage seen;
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        EXPECT_EQ(LaunchAndWait(launcher, nullptr, verb, file, {}, ShowNormal), code);
        const QString english = QString::fromUtf8(message).replace(QStringLiteral("<file>"), file);
        EXPECT_EQ(seen.text == english, !japanese) << seen.text.toStdString();
        EXPECT_EQ(seen.text.contains(file), english.contains(file));
        EXPECT_EQ(seen.icon, QMessageBox::Critical);
    }
}

TEST(ShellLaunching, OpeningADocumentTellsWhatWentWrongWhenAskedTo)
{
    QTemporaryDir dir;
    const QString document = dir.filePath(QStringLiteral("result.doc"));
    QFile(document).open(QIODevice::WriteOnly);
    const std::tuple<QString, DocumentOpener::Result, quint32> rows[] = {
        {document, DocumentOpener::Result::Opened, 0},
        {document, DocumentOpener::Result::NoAssociation, 31},
        {dir.filePath(QStringLiteral("gone.doc")), DocumentOpener::Result::Opened, 2},
        {dir.filePath(QStringLiteral("gone/x.doc")), DocumentOpener::Result::Opened, 3},
    };
    for (const auto& [path, result, code] : rows) {
        FakeOpener opener;
        opener.result = result;
        MessageBoxWatch seen;
        OpenDocument(opener, nullptr, path, -1);
        OpenDocument(opener, nullptr, path, 0);
        ProcessPendingEvents();
        EXPECT_EQ(seen.Texts(),
                  code ? QStringList{ShellFailureMessage(code, OpenVerb, path)} : QStringList());
        EXPECT_EQ(opener.opened.size(), path == document ? 2 : 0);
    }
}

// The real launcher, with programs that stand where a shell would trip.
TEST(RealPrograms, GetTheirArgumentsVerbatimAndAreCollectedWhenLetGo)
{
    QTemporaryDir dir;
    const QString program = dir.filePath(QStringLiteral("with blanks $(x); 'q'/-rec order"));
    ASSERT_TRUE(QDir().mkpath(QFileInfo(program).path()));
    ASSERT_TRUE(QFile::copy(Recorder, program));
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
    EXPECT_EQ(Recorded(record, 0), arguments) << "the wait ended before the program did";

    // Real start failures give their codes; a file that is no program is never run by a shell.
    const QString garbage = dir.filePath(QStringLiteral("garbage"));
    QFile file(garbage);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("touch pwned\n");
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    file.close();
    ProcessHandle none;
    for (const auto& [path, code] :
         {std::pair{dir.filePath("missing"), 2}, std::pair{dir.filePath("gone/missing"), 3},
          std::pair{dir.path(), 5}, std::pair{garbage, 11}})
        EXPECT_EQ(LaunchProcess(*launcher, nullptr, OpenVerb, path, {}, ShowNormal, none, 0), code)
            << path.toStdString();
    EXPECT_FALSE(QFile::exists(QStringLiteral("pwned")));

    // A program let go of while it runs, as a skipped preview is, goes on by itself and is
    // collected once it ends.
    QFile::remove(record);
    qputenv("VELMORA_RECORD_HOLD", QFile::encodeName(record + QStringLiteral(".go")));
    ProcessHandle running;
    ASSERT_EQ(LaunchProcess(*launcher, nullptr, OpenVerb, Recorder, {}, ShowNormal, running, -1),
              42);
    EXPECT_FALSE(running->WaitForEnd(0));
    running.reset();
    QFile(record + QStringLiteral(".go")).open(QIODevice::WriteOnly);
    ASSERT_TRUE(Recorded(record, 20000)) << "letting go ended the program";
    siginfo_t zombie{};
    for (int round = 0; round < 500; ++round, QThread::msleep(10)) {
        zombie = {};
        if (::waitid(P_ALL, 0, &zombie, WEXITED | WNOHANG | WNOWAIT) != 0 || zombie.si_pid == 0)
            break;
    }
    EXPECT_EQ(zombie.si_pid, 0) << "a child was left a zombie";
    qunsetenv("VELMORA_RECORD_HOLD");
}

// The desktop's real opener on a desktop of the test's own, where .doc files belong to the
// argument recorder. GIO reads the association database once, so it is written first.
TEST(RealDesktop, DocumentsOpenInTheirApplicationWhichIsNotWaitedFor)
{
    const QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    const QString data = config + QStringLiteral("/../data");
    qputenv("XDG_DATA_HOME", QFile::encodeName(data));
    QTemporaryDir dir;
    const QString document = dir.filePath(QStringLiteral("-My $(report);.doc"));
    const QString unknown = dir.filePath(QStringLiteral("data.vlmunknown"));
    // An empty file would be known by its emptiness, not its name.
    for (const auto& [path, bytes] :
         {std::pair{data + QStringLiteral("/applications/velmora-test-viewer.desktop"),
                    "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" +
                        QFile::encodeName(Recorder) + " %f\nMimeType=application/msword;\n"},
          std::pair{config + QStringLiteral("/mimeapps.list"),
                    QByteArray("[Default Applications]\n"
                               "application/msword=velmora-test-viewer.desktop\n")},
          std::pair{document, QByteArray("doc")}, std::pair{unknown, QByteArray(64, '\0')}}) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    const auto opener = CreateDocumentOpener();
    const QString record = dir.filePath(QStringLiteral("record"));
    // The application stays until it is released: a call that waited for it would not be back.
    qputenv("VELMORA_RECORD_FILE", QFile::encodeName(record));
    qputenv("VELMORA_RECORD_HOLD", QFile::encodeName(record + QStringLiteral(".go")));
    EXPECT_EQ(opener->Open(document), DocumentOpener::Result::Opened);
    EXPECT_FALSE(QFile::exists(record)) << "the application was waited for";
    QFile(record + QStringLiteral(".go")).open(QIODevice::WriteOnly);
    EXPECT_EQ(Recorded(record, 20000), QStringList{document});
    qunsetenv("VELMORA_RECORD_HOLD");
    EXPECT_EQ(opener->Open(unknown), DocumentOpener::Result::NoAssociation);
}

}  // namespace
