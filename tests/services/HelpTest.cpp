#include "RecorderSupport.h"

#include "platform/HelpViewer.h"
#include "platform/ProcessLauncher.h"
#include "platform/helpviewer/HelpWindow.h"
#include "services/Help.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QAction>
#include <QFile>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBrowser>

#include <gtest/gtest.h>

namespace {

const QString AppDir = QStringLiteral("/opt/velmora");

TEST(HelpTest, EachDialogsTopicOpensItsPageAtItsAnchor)
{
    struct Row
    {
        QString topic;
        QString page;
        QString anchor;
    };
    const QString options = AppDir + QStringLiteral("/Sandpiper/options.htm");
    const QList<Row> rows = {
        {HelpTopics::Main, options, QStringLiteral("convertPDF")},
        {HelpTopics::DocumentType, options, QStringLiteral("convertPDFType")},
        {HelpTopics::ConversionMethod, options, QStringLiteral("convertPDFConversion")},
        {HelpTopics::Advanced, options, QStringLiteral("convertPDFAdvanced")},
        {QStringLiteral("::/Vorek/use.htm"), AppDir + QStringLiteral("/Sandpiper/Vorek/use.htm"),
         QString()},
    };
    FakeHelpViewer viewer;
    for (const Row& row : rows)
        ShowHelpTopic(viewer, AppDir, row.topic, nullptr);
    ASSERT_EQ(viewer.pages.size(), rows.size());
    for (qsizetype i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(viewer.pages.at(i), rows.at(i).page) << rows.at(i).topic.toStdString();
        EXPECT_EQ(viewer.anchors.at(i), rows.at(i).anchor) << rows.at(i).topic.toStdString();
        EXPECT_EQ(viewer.contents.at(i), AppDir + QStringLiteral("/Sandpiper/Vorek/use.htm"));
    }
}

TEST(HelpTest, AViewerThatFailsIsToldToTheUserInTheirLanguage)
{
    const bool japanese = qEnvironmentVariable("VELMORA_TEST_LOCALE") == QStringLiteral("ja");
    struct Row
    {
        HelpViewer::Failure failure;
        const char* english;
        const char* japanese;
    };
    const Row rows[] = {
        {HelpViewer::Failure::NoSuchPage,
         "Unable to open the help page /opt/velmora/Sandpiper/options.htm: the page does not "
         "exist",
         "ヘルプ ページ /opt/velmora/Sandpiper/options.htm を開けませんでした: "
         "ページが見つかりません"},
        {HelpViewer::Failure::ViewerDidNotStart,
         "Unable to open the help page /opt/velmora/Sandpiper/options.htm: the help viewer could "
         "not be started",
         "ヘルプ ページ /opt/velmora/Sandpiper/options.htm を開けませんでした: "
         "ヘルプ ビューアーを起動できませんでした"},
    };
    for (const Row& row : rows) {
        FakeHelpViewer viewer;
        viewer.failure = row.failure;
        SeenMessage seen;
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        ShowHelpTopic(viewer, AppDir, HelpTopics::Advanced, nullptr);
        ASSERT_TRUE(seen.shown);
        EXPECT_EQ(seen.text, QString::fromUtf8(japanese ? row.japanese : row.english));
        EXPECT_EQ(seen.title, QStringLiteral("PDF to Word Converter"));
    }
}

TEST(HelpTest, TheHelpFilePropertyNamesTheStartPage)
{
    EXPECT_EQ(ApplicationHelpFile(AppDir),
              QStringLiteral("/opt/velmora/Sandpiper::/Vorek/use.htm"));
    SetApplicationHelpFile(ApplicationHelpFile(QStringLiteral("/srv/app")));
    EXPECT_EQ(ApplicationHelpFileProperty(), QStringLiteral("/srv/app/Sandpiper::/Vorek/use.htm"));

    FakeHelpViewer viewer;
    ShowApplicationHelp(viewer, nullptr);
    EXPECT_EQ(viewer.pages, QStringList{QStringLiteral("/srv/app/Sandpiper/Vorek/use.htm")});
    EXPECT_EQ(viewer.anchors, QStringList{QString()});
}

// The real viewer window on the shipped pages: each topic shows its section at the top, and
// back, forward and contents move between pages.
TEST(HelpTest, TheViewerWindowShowsEachTopicAtItsAnchor)
{
    const QString folder = QStringLiteral(VELMORA_APP_DIR "/Sandpiper");
    HelpWindow window(QUrl::fromLocalFile(folder + QStringLiteral("/Vorek/use.htm")), false);
    window.resize(600, 300);
    window.show();
    QTextBrowser& browser = window.Browser();
    int previous = -1;
    for (const QString& anchor :
         {QStringLiteral("convertPDF"), QStringLiteral("convertPDFType"),
          QStringLiteral("convertPDFConversion"), QStringLiteral("convertPDFAdvanced")}) {
        QUrl page = QUrl::fromLocalFile(folder + QStringLiteral("/options.htm"));
        page.setFragment(anchor);
        window.ShowTopic(page);
        ProcessPendingEvents();
        const int offset = browser.verticalScrollBar()->value();
        EXPECT_GT(offset, previous) << anchor.toStdString() << " is further down the page";
        previous = offset;
    }
    auto* contents = window.findChild<QAction*>(QStringLiteral("ActionContents"));
    auto* back = window.findChild<QAction*>(QStringLiteral("ActionBack"));
    ASSERT_TRUE(contents && back);
    contents->trigger();
    EXPECT_TRUE(browser.source().path().endsWith(QStringLiteral("/Vorek/use.htm")));
    EXPECT_TRUE(back->isEnabled());
    back->trigger();
    EXPECT_TRUE(browser.source().path().endsWith(QStringLiteral("/options.htm")));
}

TEST(HelpTest, TheViewerProgramGetsThePagesAndIsNotWaitedFor)
{
    QTemporaryDir appDir;
    ASSERT_TRUE(appDir.isValid());
    ASSERT_TRUE(QFile::link(RecorderProgram(), appDir.filePath(QStringLiteral("VelmoraHelp"))));
    const QString record = appDir.filePath(QStringLiteral("record"));
    qputenv("VELMORA_RECORD_FILE", QFile::encodeName(record));
    qputenv("VELMORA_RECORD_DELAY_MS", "1500");

    const auto launcher = CreateProcessLauncher();
    const std::unique_ptr<HelpViewer> viewer = CreateHelpViewer(*launcher, appDir.path());
    const QString page = QStringLiteral(VELMORA_APP_DIR "/Sandpiper/options.htm");
    const QString start = QStringLiteral(VELMORA_APP_DIR "/Sandpiper/Vorek/use.htm");
    EXPECT_EQ(viewer->ShowPage(start, page, QStringLiteral("convertPDFType")),
              HelpViewer::Failure::None);
    EXPECT_FALSE(QFile::exists(record)) << "the viewer was waited for";
    const std::optional<Recorded> seen = ReadRecord(record, 20000);
    ASSERT_TRUE(seen.has_value());
    EXPECT_EQ(seen->arguments, (QStringList{start, page, QStringLiteral("convertPDFType")}));

    // A page that isn't there is refused before any viewer starts; a missing viewer is told.
    QFile::remove(record);
    EXPECT_EQ(viewer->ShowPage(start, appDir.filePath(QStringLiteral("gone.htm")), QString()),
              HelpViewer::Failure::NoSuchPage);
    QFile::remove(appDir.filePath(QStringLiteral("VelmoraHelp")));
    EXPECT_EQ(viewer->ShowPage(start, page, QString()), HelpViewer::Failure::ViewerDidNotStart);
    EXPECT_FALSE(ReadRecord(record, 300).has_value());
    qunsetenv("VELMORA_RECORD_FILE");
    qunsetenv("VELMORA_RECORD_DELAY_MS");
}

}  // namespace
