// The whole road of a conversion with the real pieces that do the work: the PDF access library,
// the engine, and the settings store it reads its options from.

#include "PdfFixtures.h"
#include "TestPaths.h"
#include "dialogs/PageTestSupport.h"
#include "dialogs/WelcomeForm.h"
#include "intake/PdfToWordController.h"
#include "options/SettingsStore.h"
#include "platform/PdfAccessLibrary.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>

namespace {

using ConvertRoadTest = PageTest;

TEST_F(ConvertRoadTest, AProtectedPdfOpensWithItsPreviewAndBecomesRichText)
{
    const QTemporaryDir work(QDir::tempPath() + QStringLiteral("/road dir 日本 XXXXXX"));
    const char* words[] = {"alpha", "bravo", "yak"};
    std::vector<velmora::fixtures::PagePlan> pages(3);
    for (std::size_t i = 0; i < pages.size(); ++i)
        pages[i].texts.push_back(
            {72, 700, 14, words[i], velmora::fixtures::FontId::Helvetica, 0, 0});
    env.state.SourcePath = work.filePath(QStringLiteral("-locked \"q\" $(x); 文書.pdf"));
    velmora::fixtures::WritePdf(QFile::encodeName(env.state.SourcePath).toStdString(), pages,
                                "open sesame");
    // The engine, found beside the program, is started for real by the fake launcher, and reads
    // its options from the real store, which holds nothing from earlier runs.
    env.context.applicationDir = QStringLiteral(VELMORA_APP_DIR);
    env.context.settings = QSettingsShellFactory();
    QSettings(QSettings::UserScope, StoreNames::Organisation, StoreNames::Application).clear();
    LoadSettings(env.state, env.context.settings);
    env.state.RunMode = RunModes::Convert;
    env.state.DocumentFormat = 2;
    env.state.LaunchWord = 1;
    const auto pdfAccess = CreatePdfAccessLibrary();
    PdfToWordController realFlow(env.context, *pdfAccess);
    Forms real(runtime, env.context, realFlow);

    WhenModalAppears(
        QStringLiteral("PasswordForm"),
        [](QWidget& dialog) {
            Get<QLineEdit>(dialog, "TextPassword").setText("open sesame");
            Get(dialog, "ButtonOK").click();
        },
        30000);
    WelcomeForm& welcome = real.Welcome();
    runtime.Show(welcome);
    ASSERT_TRUE(welcome.Activated());
    EXPECT_TRUE(Get<QLabel>(welcome, "PictureThumb").isVisibleTo(&welcome)) << "a preview";

    const QString target = work.filePath(QStringLiteral("out put 'x'.rtf"));
    WhenModalAppears(
        QStringLiteral("CommonDialog1"),
        [&](QWidget& dialog) {
            static_cast<QFileDialog&>(dialog).selectFile(target);
            QMetaObject::invokeMethod(&dialog, "accept");
        },
        30000);
    const MessageBoxWatch messages;
    Get(welcome, "ButtonConvert").click();
    EXPECT_EQ(messages.Count(), 0) << messages.Texts().join(u'\n').toStdString();
    EXPECT_EQ(env.opener.opened, QStringList{target}) << "the result is opened";
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    QFile rtf(target);
    ASSERT_TRUE(rtf.open(QIODevice::ReadOnly));
    const QByteArray text = rtf.readAll();
    EXPECT_TRUE(text.startsWith("{\\rtf") && text.contains("alpha") && text.contains("yak"));
    EXPECT_TRUE(QDir::temp().entryList({QStringLiteral("~SV*")}).isEmpty()) << "all swept";
}

}  // namespace
