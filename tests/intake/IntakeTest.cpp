#include "TestPaths.h"
#include "dialogs/PageTestSupport.h"
#include "dialogs/WelcomeForm.h"
#include "intake/PdfToWordController.h"
#include "platform/PdfAccessLibrary.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>

namespace {

// Answers page count requests from a script and records the passwords it was given.
struct ScriptedPdfAccess final : PdfAccessLibrary
{
    std::optional<qint32> GetPageCount(QString&, QString& password) override
    {
        passwords.append(password);
        if (missing)
            return std::nullopt;
        if (!rightPassword.isEmpty() && password != rightPassword)
            return password.isEmpty() ? -3 : -9;
        return pages;
    }

    qint32 pages = 3;
    QString rightPassword;
    bool missing = false;
    QStringList passwords;
};

class IntakeTest : public PageTest
{
protected:
    void SetUp() override
    {
        env.context.applicationDir = appDir.path();
        env.state.RunMode = RunModes::Convert;
        env.state.DocumentFormat = 2;
        env.state.SourcePath = QStringLiteral("/data/in put/report.pdf");
        // The engine is played by a fake that renders page 1 at once.
        env.launcher.programs.insert(engine, FakeProgram{1, 0});
        env.launcher.onStart = [](const LaunchRequest& request) {
            QImage page(60, 80, QImage::Format_RGB32);
            page.fill(Qt::gray);
            page.save(request.arguments.at(1).chopped(4) + QStringLiteral("_1.bmp"), "BMP");
        };
    }
    void TearDown() override
    {
        PageTest::TearDown();
        QDir::setCurrent(startDirectory);
    }

    WelcomeForm& Open()
    {
        WelcomeForm& welcome = withPdf.Welcome();
        runtime.Show(welcome);
        return welcome;
    }
    // Types `password` into the password dialog when it comes up and presses `button`.
    static void AnswerPassword(const QString& password, const char* button = "ButtonOK")
    {
        WhenModalAppears(QStringLiteral("PasswordForm"), [=](QWidget& dialog) {
            EXPECT_FALSE(Get(dialog, "ButtonOK").isEnabled()) << "nothing typed to confirm";
            Get<QLineEdit>(dialog, "TextPassword").setText(password);
            Get(dialog, button).click();
        });
    }

    const QString startDirectory = QDir::currentPath();
    QTemporaryDir appDir;
    const QString engine = appDir.filePath(QStringLiteral("VelmoraConverter"));
    ScriptedPdfAccess pdf;
    PdfToWordController intake{env.context, pdf};
    Forms withPdf{runtime, env.context, intake};
};

TEST_F(IntakeTest, APdfWithoutPasswordGetsThePreviewOfItsFirstPage)
{
    env.store.values.insert(StoreNames::OptionsDocument,
                            QStringLiteral("<x><string name = \"Passwords\" value = \"old\" />"));
    WelcomeForm& welcome = Open();
    ASSERT_TRUE(welcome.Activated());
    EXPECT_TRUE(Get<QLabel>(welcome, "PictureThumb").isVisibleTo(&welcome));
    EXPECT_EQ(Get<QLabel>(welcome, "PictureThumb").size(), QSize(60, 80));
    EXPECT_EQ(pdf.passwords, QStringList{QString()});
    EXPECT_EQ(env.state.PageCount, 3);
    EXPECT_EQ(env.state.OutputPath, QStringLiteral("/data/in put/report.rtf"));
    ASSERT_EQ(env.launcher.requests.size(), 1);
    EXPECT_EQ(env.launcher.requests.first().program, engine);
    EXPECT_EQ(
        env.launcher.requests.first().arguments,
        QStringList({env.state.SourcePath, env.state.PreviewPath + ".rtf", "-C", "-P", "-H"}));

    // The preview's run asked for page 1 alone at 20 dpi; the run kept the user's values.
    EXPECT_EQ(QList<qint16>({env.state.ZoomDpi, env.state.UsingPageRange}), QList<qint16>({0, 0}));
    const std::pair<const char*, const char*> stored[] = {
        {"ZoomDpi", "20"}, {"ExtractToBMP", "1"}, {"UsingPageRange", "1"}, {"Passwords", "old"}};
    for (const auto& [key, value] : stored)
        EXPECT_EQ(StoredOption(key), value) << key;
}

TEST_F(IntakeTest, APasswordIsAskedForUntilTheLibraryTakesItAndIsStoredAtOnce)
{
    pdf.rightPassword = QStringLiteral("s3cret 日本");
    QString refused;
    AnswerPassword(QStringLiteral("wrong"));
    WhenModalAppears(QStringLiteral("MessageBox"), [&](QWidget& box) {
        refused = static_cast<QMessageBox&>(box).text();
        // After the refusal, an empty dialog for the next try.
        AnswerPassword(pdf.rightPassword);
        static_cast<QMessageBox&>(box).button(QMessageBox::Ok)->click();
    });
    ASSERT_TRUE(Open().Activated());
    EXPECT_EQ(refused, Pick("Invalid password!", "パスワードが不正です。"));
    EXPECT_EQ(pdf.passwords, QStringList({"", "wrong", pdf.rightPassword}));
    EXPECT_EQ(QList<qint16>({env.state.PasswordLen, env.state.PasswordSeparator}),
              QList<qint16>({qint16(pdf.rightPassword.size() + 1), 44}));
    EXPECT_EQ(StoredOption("Passwords"), pdf.rightPassword);
}

TEST_F(IntakeTest, ACancelledPasswordOrOneWithAQuoteEndsTheRunAndNothingIsStored)
{
    pdf.rightPassword = QStringLiteral("a\"b");
    for (const char* button : {"ButtonCancel", "ButtonOK"}) {
        const bool refused = QByteArray(button) == "ButtonOK";
        pdf.passwords.clear();
        const MessageBoxWatch watch;
        AnswerPassword(pdf.rightPassword, button);
        Open();
        EXPECT_EQ(watch.Count(), refused ? 1 : 0) << button;
        EXPECT_EQ(watch.Texts().join(QString()).contains(u'"'), refused) << button;
        EXPECT_TRUE(runtime.LoadedForms().isEmpty());
        EXPECT_EQ(pdf.passwords, QStringList{QString()}) << "the password is never tried";
        EXPECT_TRUE(env.store.writes.isEmpty());
    }
}

TEST_F(IntakeTest, APdfThatCantBeOpenedEndsTheRunWithItsMessage)
{
    const std::tuple<qint32, bool, QString> rows[] = {
        {0, false,
         Pick("The PDF file contains no page!", "このPDFファイルにはページが含まれていません。")},
        {-7, false,
         Pick("Unable to open the PDF file!", "このPDFファイルを開くことができませんでした。")},
        {3, true, QStringLiteral("liblomerdoc.so")}};
    for (const auto& [pages, missing, message] : rows) {
        pdf.pages = pages;
        pdf.missing = missing;
        SeenMessage seen;
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        Open();
        EXPECT_TRUE(seen.text.contains(message)) << seen.text.toStdString();
        EXPECT_EQ(seen.icon, QMessageBox::Critical);
        EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    }
}

TEST_F(IntakeTest, TheOpenDialogStartsInTheLastFolderOrHomeAndCancelEndsTheRun)
{
    QTemporaryDir last;
    const QString picked = last.filePath(QStringLiteral("picked.pdf"));
    QFile(picked).open(QIODevice::WriteOnly);
    // The folder remembered and the one the dialog starts in; in the last, a PDF is picked.
    const std::pair<QString, QString> rows[] = {{QString(), QDir::homePath()},
                                                {last.filePath("gone"), QDir::homePath()},
                                                {last.path(), last.path()}};
    for (const auto& [remembered, expected] : rows) {
        const bool pick = remembered == last.path();
        env.state.SourcePath.clear();
        env.store.values.insert(SettingsNames::RecentPdfFolder, remembered);
        env.store.writes.clear();
        WhenModalAppears(QStringLiteral("CommonDialog1"), [&](QWidget& shown) {
            auto& dialog = static_cast<QFileDialog&>(shown);
            EXPECT_EQ(dialog.directory().absolutePath(), expected);
            if (!pick)
                return dialog.reject();
            dialog.selectFile(picked);
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        Open();
        EXPECT_EQ(runtime.LoadedForms().isEmpty(), !pick) << "a cancel ends the run";
        EXPECT_EQ(env.store.writes.contains(SettingsNames::RecentPdfFolder), pick);
    }
    EXPECT_EQ(pdf.passwords.size(), 1) << "only the picked PDF is opened";
    EXPECT_EQ(env.state.SourcePath, picked);
}

TEST_F(IntakeTest, ThePageRangeIsChosenInItsDialog)
{
    pdf.pages = 12;
    QComboBox& combo = Get<QComboBox>(Open(), "ComboPageRange");
    SeenMessage invalid;
    WhenModalAppears(QStringLiteral("PageRangeForm"), [&invalid](QWidget& dialog) {
        auto& from = Get<QLineEdit>(dialog, "TextPageFrom");
        auto& to = Get<QLineEdit>(dialog, "TextPageTo");
        EXPECT_EQ(from.text(), QStringLiteral("1"));
        EXPECT_EQ(Get<QLabel>(dialog, "LabelPageCount").text(),
                  Pick("(12 pages total)", "(計12ページ)"));
        to.setText(QStringLiteral("13"));
        AnswerNextMessageBox(QMessageBox::Ok, &invalid);
        Get(dialog, "ButtonOK").click();
        EXPECT_TRUE(dialog.isVisible()) << "an invalid range leaves the dialog open";
        from.setText(QStringLiteral(" 2"));
        to.setText(QStringLiteral("5"));
        Get(dialog, "ButtonOK").click();
    });
    combo.setCurrentIndex(1);
    emit combo.activated(1);
    EXPECT_EQ(invalid.text, Pick("Invalid page range", "ページ範囲が不正です。"));
    EXPECT_EQ(combo.currentIndex(), 1);
    EXPECT_EQ(combo.itemText(1), QStringLiteral(" 2 - 5"));
    EXPECT_EQ(QList<qint16>({env.state.PageFrom, env.state.PageTo}), QList<qint16>({1, 4}));

    // Opening it again offers the range; Cancel falls back to all pages.
    WhenModalAppears(QStringLiteral("PageRangeForm"), [](QWidget& dialog) {
        EXPECT_EQ(Get<QLineEdit>(dialog, "TextPageTo").text(), QStringLiteral("5"));
        Get(dialog, "ButtonCancel").click();
    });
    emit combo.activated(1);
    EXPECT_EQ(combo.currentIndex(), 0);
    EXPECT_EQ(combo.itemText(1), Pick("Specify", "範囲指定"));
}

TEST_F(IntakeTest, SkippingThePreviewLeavesTheRealEngineRunningAndShowsNA)
{
    // The real stand-in engine, held until it is released, which never happens: it ends when
    // its folder goes with the test.
    env.launcher.programs.clear();
    ASSERT_TRUE(QFile::copy(QStringLiteral(VELMORA_STAND_IN_ENGINE), engine));
    QFile mode(appDir.filePath(QStringLiteral("standin.mode")));
    ASSERT_TRUE(mode.open(QIODevice::WriteOnly) && mode.write("hold\n") > 0);
    mode.close();
    WhenModalAppears(QStringLiteral("ThumbnailForm"),
                     [](QWidget& dialog) { Get(dialog, "ButtonSkip").click(); });
    WelcomeForm& welcome = Open();
    ASSERT_TRUE(welcome.Activated());
    EXPECT_FALSE(QFile::exists(env.state.PreviewPath + QStringLiteral("_1.bmp")));
    EXPECT_FALSE(Get<QLabel>(welcome, "PictureThumb").isVisibleTo(&welcome));
    EXPECT_TRUE(Get<QLabel>(welcome, "LabelNA").isVisibleTo(&welcome));
}

}  // namespace
