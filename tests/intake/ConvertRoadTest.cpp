// The whole road of a conversion with the real pieces: the PDF access library, the engine,
// the settings store and, for .DOC, the office suite. Only the help viewer is a stand-in.

#include "PdfFixtures.h"
#include "TestPaths.h"
#include "core/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Forms.h"
#include "dialogs/WelcomeForm.h"
#include "intake/PdfToWordController.h"
#include "options/SettingsStore.h"
#include "platform/PdfAccessLibrary.h"
#include "platform/ProcessUtilityLibrary.h"
#include "platform/SettingsShell.h"
#include "platform/WindowGeometry.h"
#include "run/RunState.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using velmora::fixtures::PagePlan;
using velmora::fixtures::TextItem;

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

PagePlan PageWithWord(const std::string& word)
{
    PagePlan page;
    page.texts.push_back(
        TextItem{72, 700, 14, "Page word " + word, velmora::fixtures::FontId::Helvetica, 0, 0});
    return page;
}

bool HaveOffice()
{
    return QFile::exists(QStringLiteral("/usr/lib/libreoffice/program/soffice.bin")) ||
           !QStandardPaths::findExecutable(QStringLiteral("soffice")).isEmpty();
}

class ConvertRoadTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(work.isValid());
        state.RunMode = 1;
        LoadSettings(state, context.settings);
        state.LaunchWord = 0;
        state.DocumentFormat = 2;
    }
    void TearDown() override
    {
        for (Form* form : runtime.LoadedForms())
            form->hide();
        ProcessPendingEvents();
    }

    QString MakePdf(const QString& name, const std::vector<PagePlan>& pages,
                    const std::string& password = {})
    {
        const QString path = work.filePath(name);
        velmora::fixtures::WritePdf(QFile::encodeName(path).toStdString(), pages, password);
        return path;
    }

    // Opens the main dialog on `pdf`, as `marvash /c <pdf>` does.
    WelcomeForm& Open(const QString& pdf)
    {
        state.SourcePath = pdf;
        WelcomeForm& welcome = forms.Welcome();
        runtime.Show(welcome);
        return welcome;
    }

    // Presses Convert, names `target` in the save dialog and answers the closing message.
    void Convert(WelcomeForm& welcome, const QString& target, SeenMessage* finished)
    {
        WhenModalAppears(
            QStringLiteral("CommonDialog1"),
            [target, finished](QWidget& dialog) {
                auto& fileDialog = static_cast<QFileDialog&>(dialog);
                fileDialog.selectFile(target);
                // The engine and, for .DOC, the office suite take their time on a busy machine.
                AnswerNextMessageBox(QMessageBox::Ok, finished, 180000);
                QMetaObject::invokeMethod(&fileDialog, "accept");
            },
            30000);
        Child<QPushButton>(welcome, QStringLiteral("ButtonConvert")).click();
    }

    QTemporaryDir work{QDir::tempPath() + QStringLiteral("/road dir 日本 XXXXXX")};
    RunState state;
    FakeHelpViewer help;
    std::unique_ptr<ProcessUtilityLibrary> processUtility =
        LoadProcessUtilityLibrary(QStringLiteral(VELMORA_APP_DIR));
    std::unique_ptr<WindowGeometry> geometry = CreateWindowGeometry();
    std::unique_ptr<PdfAccessLibrary> pdfAccess = CreatePdfAccessLibrary();
    std::unique_ptr<ProcessLauncher> launcher = CreateProcessLauncher();
    FakeOpener opener;
    std::unique_ptr<OfficeSuite> officeSuite = CreateLibreOffice(*launcher, OfficeProfileHome());
    std::unique_ptr<FileClock> clock = CreateFileClock();
    AppContext context{state,        QSettingsShellFactory(),
                       help,         *processUtility,
                       *geometry,    VELMORA_APP_DIR,
                       *launcher,    opener,
                       *officeSuite, *clock};
    DialogRuntime runtime;
    PdfToWordController flow{context, *pdfAccess};
    Forms forms{runtime, context, flow};
};

TEST_F(ConvertRoadTest, PlainPdfBecomesRichTextWithItsPreview)
{
    const QString pdf = MakePdf(QStringLiteral("-plain \"q\" $(x); 文書.pdf"),
                                {PageWithWord("zebra"), PageWithWord("yak")});
    WelcomeForm& welcome = Open(pdf);
    ASSERT_TRUE(runtime.IsLoaded(&welcome));
    EXPECT_EQ(state.PageCount, 2);
    EXPECT_TRUE(Child<QLabel>(welcome, QStringLiteral("PictureThumb")).isVisibleTo(&welcome))
        << "the engine's preview picture is shown";
    EXPECT_GT(Child<QLabel>(welcome, QStringLiteral("PictureThumb")).width(), 10);

    const QString target = work.filePath(QStringLiteral("out put 'x'.rtf"));
    SeenMessage finished;
    Convert(welcome, target, &finished);
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    EXPECT_TRUE(finished.shown);
    const QByteArray rtf = ReadFile(target);
    EXPECT_TRUE(rtf.startsWith("{\\rtf")) << rtf.left(40).toStdString();
    EXPECT_TRUE(rtf.contains("zebra"));
    EXPECT_TRUE(rtf.contains("yak"));
    EXPECT_TRUE(QDir::temp().entryList({QStringLiteral("~SV*")}).isEmpty())
        << "temporary files are swept";
}

TEST_F(ConvertRoadTest, ProtectedPdfOpensWithItsPasswordAndRangeLimitsThePages)
{
    const QString pdf = MakePdf(
        QStringLiteral("locked.pdf"),
        {PageWithWord("alpha"), PageWithWord("bravo"), PageWithWord("charlie")}, "open sesame");
    WhenModalAppears(
        QStringLiteral("PasswordForm"),
        [](QWidget& dialog) {
            Child<QLineEdit>(dialog, QStringLiteral("TextPassword"))
                .setText(QStringLiteral("open sesame"));
            Child<QPushButton>(dialog, QStringLiteral("ButtonOK")).click();
        },
        30000);
    WelcomeForm& welcome = Open(pdf);
    ASSERT_TRUE(runtime.IsLoaded(&welcome));
    EXPECT_EQ(state.PageCount, 3);

    WhenModalAppears(QStringLiteral("PageRangeForm"), [](QWidget& dialog) {
        Child<QLineEdit>(dialog, QStringLiteral("TextPageFrom")).setText(QStringLiteral("2"));
        Child<QLineEdit>(dialog, QStringLiteral("TextPageTo")).setText(QStringLiteral("2"));
        Child<QPushButton>(dialog, QStringLiteral("ButtonOK")).click();
    });
    QComboBox& combo = Child<QComboBox>(welcome, QStringLiteral("ComboPageRange"));
    combo.setCurrentIndex(1);
    emit combo.activated(1);

    const QString target = work.filePath(QStringLiteral("range.rtf"));
    SeenMessage finished;
    Convert(welcome, target, &finished);
    const QByteArray rtf = ReadFile(target);
    EXPECT_TRUE(rtf.contains("bravo"));
    EXPECT_FALSE(rtf.contains("alpha"));
    EXPECT_FALSE(rtf.contains("charlie"));
}

TEST_F(ConvertRoadTest, CancelledSaveDialogLeavesTheDialogOpenAndWritesNothing)
{
    WelcomeForm& welcome = Open(MakePdf(QStringLiteral("a.pdf"), {PageWithWord("one")}));
    WhenModalAppears(
        QStringLiteral("CommonDialog1"),
        [](QWidget& dialog) { static_cast<QFileDialog&>(dialog).reject(); }, 30000);
    Child<QPushButton>(welcome, QStringLiteral("ButtonConvert")).click();
    EXPECT_TRUE(runtime.IsLoaded(&welcome));
    EXPECT_FALSE(QFile::exists(work.filePath(QStringLiteral("a.rtf"))));
}

TEST_F(ConvertRoadTest, OfficeDocFormatGivesAWordDocument)
{
    if (!HaveOffice())
        GTEST_SKIP() << "no office suite installed";
    state.DocumentFormat = 1;
    WelcomeForm& welcome = Open(MakePdf(QStringLiteral("for word.pdf"), {PageWithWord("kiwi")}));
    const QString target = work.filePath(QStringLiteral("for word.doc"));
    SeenMessage finished;
    Convert(welcome, target, &finished);
    EXPECT_TRUE(finished.shown);
    EXPECT_TRUE(ReadFile(target).startsWith(QByteArray::fromHex("D0CF11E0A1B11AE1")));
    EXPECT_EQ(QDir(work.path()).entryList(QDir::Files | QDir::Hidden).size(), 2)
        << "the PDF and the document";
}

TEST_F(ConvertRoadTest, OfficeHostedRunConvertsWithoutAskingOrShowing)
{
    if (!HaveOffice())
        GTEST_SKIP() << "no office suite installed";
    state.HostedByWord = -1;
    state.DocumentFormat = 1;
    const QString pdf = MakePdf(QStringLiteral("hosted.pdf"), {PageWithWord("mango")});
    state.OutputPath = work.filePath(QStringLiteral("hosted result.doc"));
    WelcomeForm& welcome = Open(pdf);
    MessageBoxWatch unexpected;
    Child<QPushButton>(welcome, QStringLiteral("ButtonConvert")).click();
    ProcessPendingEvents();
    EXPECT_EQ(unexpected.Count(), 0);
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    EXPECT_TRUE(ReadFile(state.OutputPath).startsWith(QByteArray::fromHex("D0CF11E0A1B11AE1")));
}

}  // namespace
