#include "TestPaths.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Forms.h"
#include "dialogs/WelcomeForm.h"
#include "intake/PdfIntake.h"
#include "intake/PdfToWordController.h"
#include "options/OptionsDocument.h"
#include "platform/PdfAccessLibrary.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

bool Japanese()
{
    return qEnvironmentVariable("VELMORA_TEST_LOCALE") == QStringLiteral("ja");
}

// Answers page count requests from a script; records what it was asked, and where.
struct ScriptedPdfAccess final : PdfAccessLibrary
{
    std::optional<qint32> GetPageCount(QString& pdfPath, QString& password) override
    {
        paths.append(pdfPath);
        passwords.append(password);
        directories.append(QDir::currentPath());
        if (missing)
            return std::nullopt;
        if (!rightPassword.isEmpty())
            return password == rightPassword ? pages : (password.isEmpty() ? -3 : -9);
        return pages;
    }

    qint32 pages = 3;
    QString rightPassword;
    bool missing = false;
    QStringList paths;
    QStringList passwords;
    QStringList directories;
};

class IntakeTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(appDir.isValid());
        ASSERT_TRUE(QFile::copy(QStringLiteral(VELMORA_STAND_IN_ENGINE),
                                appDir.filePath(QStringLiteral("VelmoraConverter"))));
        env.context.applicationDir = appDir.path();
        env.state.RunMode = 1;
        env.state.ConversionMethod = 2;
        env.state.DocumentType = 2;
        env.state.DocumentFormat = 2;
        env.state.JpegQuality = 85;
        env.state.SourcePath = QStringLiteral("/data/in put/report.pdf");
        startDirectory = QDir::currentPath();
    }
    void TearDown() override
    {
        for (Form* form : runtime.LoadedForms())
            form->hide();
        ProcessPendingEvents();
        QDir::setCurrent(startDirectory);
    }

    WelcomeForm& Open()
    {
        WelcomeForm& welcome = forms.Welcome();
        runtime.Show(welcome);
        return welcome;
    }

    void AnswerPassword(const QString& password)
    {
        WhenModalAppears(QStringLiteral("PasswordForm"), [password](QWidget& dialog) {
            auto& ok = Child<QPushButton>(dialog, QStringLiteral("ButtonOK"));
            EXPECT_FALSE(ok.isEnabled()) << "an empty password can't be confirmed";
            EXPECT_TRUE(Child<QLineEdit>(dialog, QStringLiteral("TextPassword")).text().isEmpty());
            Child<QLineEdit>(dialog, QStringLiteral("TextPassword")).setText(password);
            ok.click();
        });
    }

    QString startDirectory;
    QTemporaryDir appDir;
    FakeEnvironment env;
    ScriptedPdfAccess pdf;
    DialogRuntime runtime;
    PdfToWordController flow{env.context, pdf};
    Forms forms{runtime, env.context, flow};
};

TEST_F(IntakeTest, PdfWithoutPasswordGetsItsPreview)
{
    env.store.values.insert(QStringLiteral("VOREK - RTF"),
                            QStringLiteral("<x><string name = \"Passwords\" value = \"old\" />"
                                           "<numeric name = \"PasswordLen\" value = \"4\" />"));
    WelcomeForm& welcome = Open();
    ASSERT_TRUE(runtime.IsLoaded(&welcome));
    EXPECT_EQ(pdf.passwords, QStringList{QString()});
    EXPECT_EQ(pdf.directories.first(), appDir.path())
        << "the library is bound relative to the program";
    // Later activations leave the working directory in the program's directory.
    EXPECT_EQ(QDir::currentPath(), QDir(appDir.path()).canonicalPath());
    EXPECT_EQ(env.state.PageCount, 3);
    EXPECT_TRUE(welcome.Activated());
    EXPECT_TRUE(env.state.PreviewPath.contains(QStringLiteral("~SV")));
    EXPECT_EQ(env.state.OutputPath, QStringLiteral("/data/in put/report.rtf"));

    // The preview's run asked for page 1 at 20 dpi, and the fields kept the user's values.
    EXPECT_EQ(env.state.ZoomDpi, 0);
    EXPECT_EQ(env.state.UsingPageRange, 0);
    const QString stored = env.store.values.value(QStringLiteral("VOREK - RTF")).toString();
    EXPECT_EQ(ReadOptionValue(stored, QStringLiteral("ZoomDpi"), QString()), QStringLiteral("20"));
    EXPECT_EQ(ReadOptionValue(stored, QStringLiteral("ExtractToBMP"), QString()),
              QStringLiteral("1"));
    EXPECT_EQ(ReadOptionValue(stored, QStringLiteral("Passwords"), QString()),
              QStringLiteral("old"))
        << "a PDF that needs no password leaves the stored one";

    QFile args(appDir.filePath(QStringLiteral("standin.args")));
    ASSERT_TRUE(args.open(QIODevice::ReadOnly));
    const QStringList recorded = QString::fromUtf8(args.readAll()).split(u'\n');
    ASSERT_GE(recorded.size(), 5);
    EXPECT_EQ(recorded.mid(0, 5),
              (QStringList{QStringLiteral("/data/in put/report.pdf"),
                           env.state.PreviewPath + QStringLiteral(".rtf"), QStringLiteral("-C"),
                           QStringLiteral("-P"), QStringLiteral("-H")}));

    // The picture is centred on the frame.
    QLabel& thumb = Child<QLabel>(welcome, QStringLiteral("PictureThumb"));
    EXPECT_TRUE(thumb.isVisibleTo(&welcome));
    EXPECT_EQ(thumb.size(), QSize(60, 80));
    const float left =
        (welcome.ScaleXToTwips(Child<QGroupBox>(welcome, QStringLiteral("FramePreview")).width()) -
         welcome.ScaleXToTwips(60)) /
            2 +
        welcome.ScaleXToTwips(Child<QGroupBox>(welcome, QStringLiteral("FramePreview")).x());
    EXPECT_EQ(thumb.x(), welcome.TwipsToPixelsX(left));
}

TEST_F(IntakeTest, TallPictureIsCutToTheFrameAndMissingPictureShowsNA)
{
    QFile mode(appDir.filePath(QStringLiteral("standin.mode")));
    ASSERT_TRUE(mode.open(QIODevice::WriteOnly));
    mode.write("write 100 400\n");
    mode.close();
    WelcomeForm& welcome = Open();
    const int frameHeight = Child<QGroupBox>(welcome, QStringLiteral("FramePreview")).height();
    EXPECT_EQ(Child<QLabel>(welcome, QStringLiteral("PictureThumb")).height(), frameHeight - 10);
    EXPECT_EQ(Child<QLabel>(welcome, QStringLiteral("PictureThumb")).width(), 100);

    welcome.ShowPreview(appDir.filePath(QStringLiteral("~SVmissing.tmp_1.bmp")));
    EXPECT_FALSE(Child<QLabel>(welcome, QStringLiteral("PictureThumb")).isVisibleTo(&welcome));
    EXPECT_TRUE(Child<QLabel>(welcome, QStringLiteral("LabelNA")).isVisibleTo(&welcome));
    EXPECT_EQ(Child<QLabel>(welcome, QStringLiteral("LabelNA")).text(), QStringLiteral("N/A"));
}

TEST_F(IntakeTest, PasswordLoopStoresTheAcceptedPasswordAtOnce)
{
    pdf.rightPassword = QStringLiteral("s3cret 日本");
    SeenMessage refused;
    WhenModalAppears(QStringLiteral("PasswordForm"), [this, &refused](QWidget& dialog) {
        Child<QLineEdit>(dialog, QStringLiteral("TextPassword")).setText(QStringLiteral("wrong"));
        // The refusal comes next, and after it an empty dialog for the next try.
        WhenModalAppears(QStringLiteral("MessageBox"), [this, &refused](QWidget& box) {
            refused.shown = true;
            refused.text = static_cast<QMessageBox&>(box).text();
            refused.title = box.windowTitle();
            AnswerPassword(pdf.rightPassword);
            static_cast<QMessageBox&>(box).button(QMessageBox::Ok)->click();
        });
        Child<QPushButton>(dialog, QStringLiteral("ButtonOK")).click();
    });
    WelcomeForm& welcome = Open();

    ASSERT_TRUE(runtime.IsLoaded(&welcome));
    EXPECT_TRUE(refused.shown);
    EXPECT_EQ(refused.text, Japanese() ? QStringLiteral("パスワードが不正です。")
                                       : QStringLiteral("Invalid password!"));
    EXPECT_EQ(refused.title, QStringLiteral("PDF to Word Converter"));
    EXPECT_EQ(pdf.passwords, (QStringList{QString(), QStringLiteral("wrong"), pdf.rightPassword}));
    EXPECT_EQ(env.state.Passwords, pdf.rightPassword);
    EXPECT_EQ(env.state.PasswordLen, pdf.rightPassword.size() + 1);
    EXPECT_EQ(env.state.PasswordSeparator, 44);
}

TEST_F(IntakeTest, CancelledPasswordEndsTheRunSilently)
{
    pdf.rightPassword = QStringLiteral("x");
    WhenModalAppears(QStringLiteral("PasswordForm"), [](QWidget& dialog) {
        Child<QPushButton>(dialog, QStringLiteral("ButtonCancel")).click();
    });
    Open();
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    EXPECT_EQ(pdf.paths.size(), 1);
}

TEST_F(IntakeTest, PasswordWithAQuoteIsRefusedAtOnceAndNothingIsStored)
{
    pdf.rightPassword = QStringLiteral("a\"b");
    const QVariant storedBefore = env.store.values.value(QStringLiteral("VOREK - RTF"));
    SeenMessage seen;
    WhenModalAppears(QStringLiteral("PasswordForm"), [&seen](QWidget& dialog) {
        Child<QLineEdit>(dialog, QStringLiteral("TextPassword")).setText(QStringLiteral("a\"b"));
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        Child<QPushButton>(dialog, QStringLiteral("ButtonOK")).click();
    });
    Open();
    EXPECT_TRUE(seen.text.contains(u'"')) << seen.text.toStdString();
    EXPECT_EQ(seen.icon, QMessageBox::Critical);
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    EXPECT_EQ(pdf.passwords, QStringList{QString()}) << "the password is never tried";
    EXPECT_EQ(env.store.values.value(QStringLiteral("VOREK - RTF")), storedBefore);
}

struct FailureRow
{
    qint32 pages;
    const char* english;
    const char* japanese;
};

class IntakeFailureTest : public IntakeTest, public ::testing::WithParamInterface<FailureRow>
{
};

TEST_P(IntakeFailureTest, UnopenablePdfEndsTheRunWithItsMessage)
{
    pdf.pages = GetParam().pages;
    SeenMessage seen;
    AnswerNextMessageBox(QMessageBox::Ok, &seen);
    Open();
    EXPECT_TRUE(seen.shown);
    EXPECT_EQ(seen.text, QString::fromUtf8(Japanese() ? GetParam().japanese : GetParam().english));
    EXPECT_EQ(seen.icon, QMessageBox::Critical);
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, IntakeFailureTest,
    ::testing::Values(FailureRow{0, "The PDF file contains no page!",
                                 "このPDFファイルにはページが含まれていません。"},
                      FailureRow{-1, "Unable to open the PDF file!",
                                 "このPDFファイルを開くことができませんでした。"},
                      FailureRow{-7, "Unable to open the PDF file!",
                                 "このPDFファイルを開くことができませんでした。"}));

TEST_F(IntakeTest, MissingLibraryIsToldAndEndsTheRun)
{
    pdf.missing = true;
    SeenMessage seen;
    AnswerNextMessageBox(QMessageBox::Ok, &seen);
    Open();
    EXPECT_TRUE(seen.text.contains(QStringLiteral("liblomerdoc.so")));
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
}

TEST_F(IntakeTest, OpenDialogStartsInTheLastFolderOrHomeAndCancelEndsTheRun)
{
    QTemporaryDir last;
    const QString pdfPath = last.filePath(QStringLiteral("picked.pdf"));
    QFile(pdfPath).open(QIODevice::WriteOnly);
    struct Row
    {
        const char* stored;  // the remembered folder; "home", or "gone" for one that vanished
        QString expected;
    };
    for (const Row& row :
         {Row{"none", QDir::homePath()}, Row{"gone", QDir::homePath()}, Row{"last", last.path()}}) {
        SCOPED_TRACE(row.stored);
        env.state.SourcePath.clear();
        env.store.values.remove(QStringLiteral("Recent/PdfFolder"));
        if (QByteArray(row.stored) == "gone")
            env.store.values.insert(QStringLiteral("Recent/PdfFolder"), last.filePath("nope"));
        if (QByteArray(row.stored) == "last")
            env.store.values.insert(QStringLiteral("Recent/PdfFolder"), last.path());
        QString shown;
        WhenModalAppears(QStringLiteral("CommonDialog1"), [&shown](QWidget& dialog) {
            shown = static_cast<QFileDialog&>(dialog).directory().absolutePath();
            static_cast<QFileDialog&>(dialog).reject();
        });
        Open();
        EXPECT_EQ(shown, row.expected);
        EXPECT_TRUE(runtime.LoadedForms().isEmpty());
        EXPECT_TRUE(pdf.paths.isEmpty());
        ProcessPendingEvents();
    }

    env.state.SourcePath.clear();
    env.store.values.remove(QStringLiteral("Recent/PdfFolder"));
    WhenModalAppears(QStringLiteral("CommonDialog1"), [&](QWidget& dialog) {
        static_cast<QFileDialog&>(dialog).selectFile(pdfPath);
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    Open();
    EXPECT_EQ(env.state.SourcePath, pdfPath);
    EXPECT_EQ(env.store.values.value(QStringLiteral("Recent/PdfFolder")).toString(), last.path());
}

TEST_F(IntakeTest, PageRangeIsChosenInItsDialog)
{
    pdf.pages = 12;
    WelcomeForm& welcome = Open();
    QComboBox& combo = Child<QComboBox>(welcome, QStringLiteral("ComboPageRange"));

    SeenMessage invalid;
    WhenModalAppears(QStringLiteral("PageRangeForm"), [&invalid](QWidget& dialog) {
        EXPECT_EQ(Child<QLineEdit>(dialog, QStringLiteral("TextPageFrom")).text(),
                  QStringLiteral("1"));
        EXPECT_EQ(Child<QLabel>(dialog, QStringLiteral("LabelPageCount")).text(),
                  Japanese() ? QStringLiteral("(計12ページ)") : QStringLiteral("(12 pages total)"));
        Child<QLineEdit>(dialog, QStringLiteral("TextPageFrom")).setText(QStringLiteral("3"));
        Child<QLineEdit>(dialog, QStringLiteral("TextPageTo")).setText(QStringLiteral("2"));
        AnswerNextMessageBox(QMessageBox::Ok, &invalid);
        Child<QPushButton>(dialog, QStringLiteral("ButtonOK")).click();
        EXPECT_TRUE(dialog.isVisible()) << "an invalid range leaves the dialog open";
        Child<QLineEdit>(dialog, QStringLiteral("TextPageFrom")).setText(QStringLiteral(" 2"));
        Child<QLineEdit>(dialog, QStringLiteral("TextPageTo")).setText(QStringLiteral("5"));
        Child<QPushButton>(dialog, QStringLiteral("ButtonOK")).click();
    });
    combo.setCurrentIndex(1);
    emit combo.activated(1);
    EXPECT_TRUE(invalid.shown);
    EXPECT_EQ(invalid.text, Japanese() ? QStringLiteral("ページ範囲が不正です。")
                                       : QStringLiteral("Invalid page range"));
    EXPECT_EQ(combo.currentIndex(), 1);
    EXPECT_EQ(combo.itemText(1), QStringLiteral(" 2 - 5"));
    EXPECT_EQ(env.state.PageFrom, 1);
    EXPECT_EQ(env.state.PageTo, 4);

    // Opening it again offers the range; Cancel falls back to all pages, the numbers stay.
    WhenModalAppears(QStringLiteral("PageRangeForm"), [](QWidget& dialog) {
        EXPECT_EQ(Child<QLineEdit>(dialog, QStringLiteral("TextPageFrom")).text(),
                  QStringLiteral("2"));
        EXPECT_EQ(Child<QLineEdit>(dialog, QStringLiteral("TextPageTo")).text(),
                  QStringLiteral("5"));
        Child<QPushButton>(dialog, QStringLiteral("ButtonCancel")).click();
    });
    emit combo.activated(1);
    EXPECT_EQ(combo.currentIndex(), 0);
    EXPECT_EQ(combo.itemText(1),
              Japanese() ? QStringLiteral("範囲指定") : QStringLiteral("Specify"));
    EXPECT_EQ(env.state.PageFrom, 1);
    EXPECT_EQ(env.state.PageTo, 4);
}

}  // namespace

namespace {

TEST_F(IntakeTest, SkippingThePreviewEndsTheWaitAtOnceAndShowsNA)
{
    QFile mode(appDir.filePath(QStringLiteral("standin.mode")));
    ASSERT_TRUE(mode.open(QIODevice::WriteOnly));
    mode.write("sleep\n");
    mode.close();
    QElapsedTimer clock;
    WhenModalAppears(QStringLiteral("ThumbnailForm"), [&clock](QWidget& dialog) {
        clock.start();
        Child<QPushButton>(dialog, QStringLiteral("ButtonSkip")).click();
    });
    WelcomeForm& welcome = Open();
    ASSERT_TRUE(clock.isValid());
    EXPECT_LT(clock.elapsed(), 1000) << "a skip takes effect at the next slice, with no lingering";
    EXPECT_TRUE(runtime.IsLoaded(&welcome));
    EXPECT_FALSE(Child<QLabel>(welcome, QStringLiteral("PictureThumb")).isVisibleTo(&welcome));
    EXPECT_TRUE(Child<QLabel>(welcome, QStringLiteral("LabelNA")).isVisibleTo(&welcome));
}

}  // namespace
