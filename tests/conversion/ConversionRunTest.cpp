// The conversion behind the progress dialog, with the engine played by a fake program and a clock
// that says the run began a minute ago; the target is settled in the real save dialog.

#include "conversion/OutputTarget.h"
#include "conversion/WaitForm.h"
#include "dialogs/DialogRuntime.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QFileDialog>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

namespace {

const QString Engine = QStringLiteral("/opt/velmora/VelmoraConverter");
const QString Office = QStringLiteral("/usr/lib/office/soffice.bin");

// A file written `ageSeconds` ago.
void WriteFile(const QString& path, const QByteArray& bytes, int ageSeconds = 0)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) && file.flush());
    file.setFileTime(QDateTime::currentDateTime().addSecs(-ageSeconds),
                     QFileDevice::FileModificationTime);
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
        env.state.RunMode = 1;
        env.state.SourcePath = work.filePath(QStringLiteral("in put \"q\" $(x); -a.pdf"));
        env.clock.now = QDateTime::currentDateTime().addSecs(-60);
        env.launcher.programs.insert(Engine, {3, 0});
        env.launcher.onStart = [this](const LaunchRequest& request) {
            if (engineWrites)
                WriteFile(request.arguments.value(1), "{\\rtf1 engine}");
        };
        env.processUtility.fileVersions.insert(Office, 0x00070004);
    }
    void TearDown() override
    {
        for (Form* form : runtime.LoadedForms())
            form->hide();
        ProcessPendingEvents();
    }

    QTemporaryDir work;
    FakeEnvironment env;
    DialogRuntime runtime;
    bool engineWrites = true;
    const bool japanese = qEnvironmentVariable("LANG").startsWith(QStringLiteral("ja"));
};

// What the user sees after a run: "finished" or the document opened, a failure to start the
// engine, or a .doc that the office suite (one that fails, where a row installs it) could not
// finish, which holds Rich Text Format and is named for it unless that would replace a file. A
// run for a word processor shows nothing.
TEST_F(ConversionRunTest, TheOutcomeIsToldOnceAndTheFileIsNamedForWhatItHolds)
{
    enum Told { Nothing, Finished, EngineMissing, RichText };
    struct Row
    {
        qint16 format, hosted, launchWord;
        bool writes, officeInstalled, rtfTaken;
        int startError;
        Told told;
        bool opened;
        const char* kept;  // the file that holds the engine's output afterwards
    };
    const Row rows[] = {
        {2, 0, 0, true, false, false, 0, Finished, false, "-out 日本.rtf"},
        {2, 0, 1, true, false, false, 0, Nothing, true, "-out 日本.rtf"},
        {2, 0, 1, false, false, false, 0, Nothing, false, "-out 日本.rtf"},
        {2, 0, 0, true, false, false, ENOENT, EngineMissing, false, ""},
        {1, 0, 1, true, true, false, 0, RichText, true, "-out 日本.rtf"},
        {1, 0, 0, true, true, true, 0, RichText, false, "-out 日本.doc"},
        {1, -1, 1, true, true, false, 0, Nothing, false, "-out 日本.doc"},
    };
    const QString older = work.filePath(QStringLiteral("-out 日本.rtf"));
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << &row - rows);
        QFile::remove(older);
        QFile::remove(work.filePath(QStringLiteral("-out 日本.doc")));
        // An older file stays unless the engine replaces it; a taken .rtf is not ours.
        if (!row.writes || row.rtfTaken)
            WriteFile(older, "older", 3600);
        env.state.DocumentFormat = row.format;
        env.state.HostedByWord = row.hosted;
        env.state.LaunchWord = row.launchWord;
        env.state.OutputPath = work.filePath(QStringLiteral("-out 日本.txt"));
        env.officeSuite.programPath = row.officeInstalled ? Office : QString();
        env.officeSuite.run = FakeOfficeRun{.succeeds = false};
        env.launcher.startError = row.startError;
        env.launcher.requests.clear();
        env.opener.opened.clear();
        engineWrites = row.writes;

        // The progress dialog runs over an owner and is unloaded, as the Convert command does.
        MessageBoxWatch seen;
        QPointer<Form> owner;
        runtime.Show(runtime.Instance(owner));
        QPointer<WaitForm> wait;
        runtime.Instance(wait, env.context).Begin(*owner);
        if (wait && runtime.IsLoaded(wait))
            runtime.Unload(*wait);
        ProcessPendingEvents();

        const QString kept = work.filePath(QString::fromUtf8(row.kept));
        if (row.startError == 0) {
            const QString target = row.format == 1 ? QString(kept).replace(".rtf", ".doc") : kept;
            EXPECT_EQ(env.launcher.requests.value(0).arguments,
                      (QStringList{env.state.SourcePath, target, QStringLiteral("-C")}));
            EXPECT_EQ(ReadFile(kept), row.writes ? "{\\rtf1 engine}" : "older");
            EXPECT_EQ(env.state.OutputPath, kept);
        }
        EXPECT_TRUE(!row.rtfTaken || ReadFile(older) == "older");
        EXPECT_EQ(env.opener.opened, row.opened ? QStringList{kept} : QStringList());
        ASSERT_EQ(seen.Count(), row.told == Nothing ? 0 : 1);
        const QString text = seen.Texts().value(0);
        EXPECT_EQ(text == (japanese ? QStringLiteral("変換終了しました。")
                                    : QStringLiteral("Conversion finished")),
                  row.told == Finished);
        EXPECT_EQ(text.startsWith(Engine), row.told == EngineMissing);
        EXPECT_EQ(text.contains(kept), row.told == RichText) << text.toStdString();
    }
}

TEST_F(ConversionRunTest, MissingWordOffersRtfAndCancelAnywhereKeepsTheMainDialogOpen)
{
    env.state.DocumentFormat = 1;
    env.state.SourcePath = work.filePath(QStringLiteral("report.pdf"));
    AnswerNextMessageBox(QMessageBox::Cancel);
    EXPECT_FALSE(AskOutputFile(env.context, nullptr));
    EXPECT_EQ(env.state.DocumentFormat, 1) << "Cancel leaves the format alone";

    SeenMessage fallback;
    QString proposed;
    AnswerNextMessageBox(QMessageBox::Ok, &fallback);
    WhenModalAppears(QStringLiteral("CommonDialog1"), [&](QWidget& dialog) {
        proposed = static_cast<QFileDialog&>(dialog).selectedFiles().value(0);
        static_cast<QFileDialog&>(dialog).reject();
    });
    EXPECT_FALSE(AskOutputFile(env.context, nullptr));
    EXPECT_EQ(fallback.text.startsWith(QStringLiteral("MS Word 2000 or later is not found.")),
              !japanese);
    EXPECT_EQ(env.state.DocumentFormat, 2);
    EXPECT_EQ(env.store.values.value(QStringLiteral("RTF/DocumentFormat")).toInt(), 2);
    EXPECT_EQ(proposed, work.filePath(QStringLiteral("report.rtf")));
}

// The name typed into the save dialog is written with the format's extension; the replace
// question must be about that file, not the one typed.
TEST_F(ConversionRunTest, SaveDialogAsksBeforeReplacingTheFileThatWillReallyBeWritten)
{
    env.officeSuite.programPath = Office;
    env.state.DocumentFormat = 1;
    WriteFile(work.filePath(QStringLiteral("victim.doc")), "precious");
    for (const char* typed : {"victim", "victim.rtf", "fresh.rtf"}) {
        SCOPED_TRACE(typed);
        const bool fresh = QByteArray(typed).startsWith("fresh");
        env.state.OutputPath = work.filePath(QStringLiteral("proposed.doc"));
        // The replace question is Qt's own box, modal over the dialog while it accepts: No.
        MessageBoxWatch question;
        WhenModalAppears(QStringLiteral("CommonDialog1"), [&](QWidget& dialog) {
            auto& fileDialog = static_cast<QFileDialog&>(dialog);
            fileDialog.selectFile(work.filePath(QString::fromUtf8(typed)));
            QMetaObject::invokeMethod(&fileDialog, "accept");
            if (fileDialog.isVisible())
                fileDialog.reject();
        });
        EXPECT_EQ(AskOutputFile(env.context, nullptr), fresh);
        ASSERT_EQ(question.Count(), fresh ? 0 : 1);
        EXPECT_TRUE(fresh || question.Texts().first().contains(QStringLiteral("victim.doc")));
        EXPECT_EQ(env.state.OutputPath,
                  work.filePath(QString::fromUtf8(fresh ? "fresh.doc" : "proposed.doc")));
        EXPECT_EQ(ReadFile(work.filePath(QStringLiteral("victim.doc"))), "precious");
    }
}

}  // namespace
