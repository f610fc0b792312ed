#include "TestPaths.h"
#include "conversion/OutputTarget.h"
#include "conversion/WaitForm.h"
#include "dialogs/DialogRuntime.h"
#include "platform/OfficeSuite.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QAbstractButton>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QPointer>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

bool Japanese()
{
    return qEnvironmentVariable("VELMORA_TEST_LOCALE") == QStringLiteral("ja");
}

// A plain owner for the progress dialog.
class OwnerForm final : public Form
{
public:
    explicit OwnerForm(DialogRuntime& runtime) : Form(runtime)
    {
        setObjectName(QStringLiteral("Owner"));
    }
};

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class ConversionRunTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(appDir.isValid());
        ASSERT_TRUE(QFile::copy(QStringLiteral(VELMORA_STAND_IN_ENGINE),
                                appDir.filePath(QStringLiteral("VelmoraConverter"))));
        env.context.applicationDir = appDir.path();
        env.state.RunMode = 1;
        env.state.DocumentFormat = 2;
        env.state.LaunchWord = 0;
        env.state.SourcePath = work.filePath(QStringLiteral("in put \"q\" $(x); -a.pdf"));
        env.state.OutputPath = work.filePath(QStringLiteral("-out 日本.txt"));
    }
    void TearDown() override
    {
        for (Form* form : runtime.LoadedForms())
            form->hide();
        ProcessPendingEvents();
    }

    void SetMode(const char* mode)
    {
        WriteFile(appDir.filePath(QStringLiteral("standin.mode")), mode);
    }

    // Loads the progress dialog, runs it over an owner and unloads it, as the Convert command does.
    void Run()
    {
        QPointer<OwnerForm> owner;
        runtime.Instance(owner);
        runtime.Show(*owner);
        QPointer<WaitForm> wait;
        runtime.Instance(wait, env.context);
        wait->Begin(*owner);
        if (wait && runtime.IsLoaded(wait))
            runtime.Unload(*wait);
    }

    QTemporaryDir appDir;
    QTemporaryDir work;
    FakeEnvironment env;
    DialogRuntime runtime;
};

TEST_F(ConversionRunTest, NewOutputIsReportedFinishedWithTheTargetNamedForTheFormat)
{
    SeenMessage seen;
    AnswerNextMessageBox(QMessageBox::Ok, &seen);
    Run();
    const QString target = work.filePath(QStringLiteral("-out 日本.rtf"));
    EXPECT_EQ(env.state.OutputPath, target);
    EXPECT_TRUE(QFile::exists(target));
    EXPECT_TRUE(seen.shown);
    EXPECT_EQ(seen.text, Japanese() ? QStringLiteral("変換終了しました。")
                                    : QStringLiteral("Conversion finished"));
    EXPECT_EQ(seen.icon, QMessageBox::Information);
    // The names reach the engine exactly as they are, whatever they hold.
    const QStringList recorded =
        QString::fromUtf8(ReadFile(appDir.filePath(QStringLiteral("standin.args")))).split(u'\n');
    ASSERT_GE(recorded.size(), 3);
    EXPECT_EQ(recorded.mid(0, 3),
              (QStringList{env.state.SourcePath, target, QStringLiteral("-C")}));
}

TEST_F(ConversionRunTest, EngineThatWritesNothingEndsSilentlyAndKeepsTheOlderFile)
{
    const QString target = work.filePath(QStringLiteral("-out 日本.rtf"));
    WriteFile(target, "older");
    SetMode("nothing");
    MessageBoxWatch seen;
    Run();
    ProcessPendingEvents();
    EXPECT_EQ(seen.Count(), 0);
    EXPECT_EQ(ReadFile(target), QByteArray("older"));
}

TEST_F(ConversionRunTest, CrashingEngineEndsSilently)
{
    SetMode("crash");
    MessageBoxWatch seen;
    Run();
    ProcessPendingEvents();
    EXPECT_EQ(seen.Count(), 0);
    EXPECT_FALSE(QFile::exists(work.filePath(QStringLiteral("-out 日本.rtf"))));
}

TEST_F(ConversionRunTest, MissingEngineGetsTheShellMessage)
{
    ASSERT_TRUE(QFile::remove(appDir.filePath(QStringLiteral("VelmoraConverter"))));
    SeenMessage seen;
    AnswerNextMessageBox(QMessageBox::Ok, &seen);
    Run();
    EXPECT_TRUE(seen.shown);
    EXPECT_TRUE(seen.text.startsWith(appDir.filePath(QStringLiteral("VelmoraConverter"))))
        << seen.text.toStdString();
    EXPECT_EQ(seen.icon, QMessageBox::Critical);
}

TEST_F(ConversionRunTest, HostedRunShowsNothingOnSuccess)
{
    env.state.HostedByWord = -1;
    env.state.DocumentFormat = 1;  // no office suite: the file keeps what the engine wrote
    MessageBoxWatch seen;
    Run();
    ProcessPendingEvents();
    EXPECT_EQ(seen.Count(), 0);
    EXPECT_EQ(ReadFile(work.filePath(QStringLiteral("-out 日本.doc"))).left(6),
              QByteArray("{\\rtf1"));
}

TEST_F(ConversionRunTest, MissingWordOffersRtfAndTheSaveDialogProposesIt)
{
    env.state.DocumentFormat = 1;
    env.state.OutputPath.clear();
    env.state.SourcePath = work.filePath(QStringLiteral("report.pdf"));
    SeenMessage fallback;
    QString proposed;
    WhenModalAppears(QStringLiteral("MessageBox"), [&](QWidget& box) {
        fallback.shown = true;
        fallback.text = static_cast<QMessageBox&>(box).text();
        WhenModalAppears(QStringLiteral("CommonDialog1"), [&](QWidget& dialog) {
            auto& fileDialog = static_cast<QFileDialog&>(dialog);
            proposed = fileDialog.selectedFiles().value(0);
            fileDialog.selectFile(work.filePath(QStringLiteral("chosen.rtf")));
            QMetaObject::invokeMethod(&fileDialog, "accept");
        });
        static_cast<QMessageBox&>(box).button(QMessageBox::Ok)->click();
    });
    EXPECT_TRUE(AskOutputFile(env.context, nullptr));
    EXPECT_TRUE(fallback.shown);
    const QString english = QStringLiteral(
        "MS Word 2000 or later is not found.\n\nSaving the file as .DOC format "
        "requires MS Word 2000 or later.\nThe document will be saved as .RTF format.");
    if (!Japanese()) {
        EXPECT_EQ(fallback.text, english);
    }
    EXPECT_EQ(env.state.DocumentFormat, 2);
    EXPECT_EQ(env.store.values.value(QStringLiteral("RTF/DocumentFormat")).toInt(), 2);
    EXPECT_EQ(proposed, work.filePath(QStringLiteral("report.rtf")));
    EXPECT_EQ(env.state.OutputPath, work.filePath(QStringLiteral("chosen.rtf")));
}

TEST_F(ConversionRunTest, CancelInTheFallbackOrTheSaveDialogKeepsTheDialogOpen)
{
    env.state.DocumentFormat = 1;
    AnswerNextMessageBox(QMessageBox::Cancel);
    EXPECT_FALSE(AskOutputFile(env.context, nullptr));
    EXPECT_EQ(env.state.DocumentFormat, 1) << "Cancel leaves the format alone";

    env.state.DocumentFormat = 2;
    const QString before = env.state.OutputPath;
    WhenModalAppears(QStringLiteral("CommonDialog1"),
                     [](QWidget& dialog) { static_cast<QFileDialog&>(dialog).reject(); });
    EXPECT_FALSE(AskOutputFile(env.context, nullptr));
    EXPECT_EQ(env.state.OutputPath, work.filePath(QStringLiteral("-out 日本.rtf")));
}

// A .doc that the office suite could not finish holds Rich Text Format: the user is told, and
// it takes the .rtf name unless that would replace a file. A hosted run keeps its name.
TEST_F(ConversionRunTest, FailedFinishingIsToldAndTheFileNamedForWhatItHolds)
{
    struct Row
    {
        const char* name;
        qint16 hosted;
        bool rtfExists;
        const char* kept;  // the file that holds the engine's output afterwards
    };
    const Row rows[] = {{"renamed", 0, false, "out.rtf"},
                        {"rtf taken", 0, true, "out.doc"},
                        {"hosted", -1, false, "out.doc"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir folder;
        FakeOfficeSuite& word = env.officeSuite;
        word.programPath = QStringLiteral("/usr/lib/office/soffice.bin");
        word.run = FakeOfficeRun{};
        word.run.succeeds = false;
        env.processUtility.fileVersions.insert(word.programPath, 0x00070004);
        env.state.DocumentFormat = 1;
        env.state.HostedByWord = row.hosted;
        env.state.OutputPath = folder.filePath(QStringLiteral("out.doc"));
        if (row.rtfExists)
            WriteFile(folder.filePath(QStringLiteral("out.rtf")), "theirs");

        MessageBoxWatch seen;
        Run();
        ProcessPendingEvents();
        const QString kept = folder.filePath(QString::fromUtf8(row.kept));
        EXPECT_TRUE(ReadFile(kept).startsWith("{\\rtf1"));
        EXPECT_EQ(env.state.OutputPath, kept);
        if (row.rtfExists) {
            EXPECT_EQ(ReadFile(folder.filePath(QStringLiteral("out.rtf"))), QByteArray("theirs"));
        }
        ASSERT_EQ(seen.Count(), row.hosted ? 0 : 1) << "and no second box saying it finished";
        if (!row.hosted) {
            EXPECT_TRUE(seen.Texts().first().contains(kept)) << seen.Texts().first().toStdString();
        }
    }
}

// The name typed into the save dialog is written with the format's extension; the replace
// question must be about that file, not the one typed.
TEST_F(ConversionRunTest, SaveDialogAsksBeforeReplacingTheFileThatWillReallyBeWritten)
{
    env.officeSuite.programPath = QStringLiteral("/usr/lib/office/soffice.bin");
    env.processUtility.fileVersions.insert(env.officeSuite.programPath, 0x00070004);
    env.state.DocumentFormat = 1;
    const QString victim = work.filePath(QStringLiteral("victim.doc"));
    WriteFile(victim, "precious");

    struct Row
    {
        const char* typed;
        QMessageBox::StandardButton answer;  // NoButton: no question may come
        bool accepted;
        const char* target;
    };
    const Row rows[] = {
        {"victim", QMessageBox::No, false, ""},
        {"victim.rtf", QMessageBox::No, false, ""},
        {"victim.rtf", QMessageBox::Yes, true, "victim.doc"},
        {"fresh.rtf", QMessageBox::NoButton, true, "fresh.doc"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.typed);
        env.state.OutputPath = work.filePath(QStringLiteral("proposed.doc"));
        QString question;
        WhenModalAppears(QStringLiteral("CommonDialog1"), [&](QWidget& dialog) {
            auto& fileDialog = static_cast<QFileDialog&>(dialog);
            fileDialog.selectFile(work.filePath(QString::fromUtf8(row.typed)));
            // The replace question is Qt's own box, modal over the dialog while it accepts.
            QTimer answer;
            QObject::connect(&answer, &QTimer::timeout, [&] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                if (!box || !box->isVisible())
                    return;
                answer.stop();
                question = box->text();
                box->button(row.answer == QMessageBox::NoButton ? QMessageBox::No : row.answer)
                    ->click();
            });
            answer.start(10);
            QMetaObject::invokeMethod(&fileDialog, "accept");
            if (fileDialog.isVisible())
                fileDialog.reject();
        });
        EXPECT_EQ(AskOutputFile(env.context, nullptr), row.accepted);
        if (row.answer == QMessageBox::NoButton) {
            EXPECT_TRUE(question.isEmpty()) << question.toStdString();
        } else {
            EXPECT_TRUE(question.contains(QStringLiteral("victim.doc"))) << question.toStdString();
        }
        if (row.accepted) {
            EXPECT_EQ(env.state.OutputPath, work.filePath(QString::fromUtf8(row.target)));
        }
        EXPECT_EQ(ReadFile(victim), QByteArray("precious"));
    }
}

}  // namespace
