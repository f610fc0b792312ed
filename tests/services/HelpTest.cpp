#include "RecorderSupport.h"

#include "platform/HelpViewer.h"
#include "services/Help.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

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
    }
}

TEST(HelpTest, AViewerThatFailsIsToldToTheUser)
{
    FakeHelpViewer viewer;
    viewer.fail = true;
    SeenMessage seen;
    AnswerNextMessageBox(QMessageBox::Ok, &seen);
    ShowHelpTopic(viewer, AppDir, HelpTopics::Advanced, nullptr);
    ASSERT_TRUE(seen.shown);
    EXPECT_EQ(seen.text, QStringLiteral("Unable to open the help page "
                                        "/opt/velmora/Sandpiper/options.htm: no viewer"));
    EXPECT_EQ(seen.title, QStringLiteral("PDF to Word Converter"));
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

TEST(HelpTest, TheShippedPagesHoldEveryTopicsAnchor)
{
    const QString appDir = QStringLiteral(VELMORA_APP_DIR);
    struct Row
    {
        QString page;
        QStringList anchors;
    };
    const QList<Row> rows = {
        {QStringLiteral("options.htm"),
         {QStringLiteral("convertPDF"), QStringLiteral("convertPDFType"),
          QStringLiteral("convertPDFConversion"), QStringLiteral("convertPDFAdvanced")}},
        {QStringLiteral("Vorek/use.htm"), {}},
    };
    for (const Row& row : rows) {
        QFile page(appDir + QStringLiteral("/Sandpiper/") + row.page);
        ASSERT_TRUE(page.open(QIODevice::ReadOnly)) << page.fileName().toStdString();
        const QString html = QString::fromUtf8(page.readAll());
        EXPECT_TRUE(html.contains(QStringLiteral("</html>"), Qt::CaseInsensitive));
        for (const QString& anchor : row.anchors) {
            const QRegularExpression target(QStringLiteral("\\b(id|name)=\"%1\"").arg(anchor));
            EXPECT_EQ(html.count(target), 1)
                << row.page.toStdString() << "#" << anchor.toStdString();
        }
    }
}

TEST(HelpTest, TheDesktopViewerHandsTheOpenerTheAddressOfThePage)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    FakeOpenerPath opener(dir.filePath(QStringLiteral("bin")));
    const QString record = dir.filePath(QStringLiteral("record"));
    qputenv("VELMORA_RECORD_FILE", QFile::encodeName(record));

    const std::unique_ptr<HelpViewer> viewer = CreateHelpViewer();
    const QString page = QStringLiteral(VELMORA_APP_DIR "/Sandpiper/options.htm");
    QString error;
    EXPECT_TRUE(viewer->ShowPage(page, QStringLiteral("convertPDFType"), error))
        << error.toStdString();
    const std::optional<Recorded> seen = ReadRecord(record, 5000);
    ASSERT_TRUE(seen.has_value());
    EXPECT_EQ(seen->arguments,
              QStringList{QStringLiteral("file://" VELMORA_APP_DIR
                                         "/Sandpiper/options.htm#convertPDFType")});

    // A page that isn't there is refused before any viewer starts.
    QFile::remove(record);
    EXPECT_FALSE(viewer->ShowPage(dir.filePath(QStringLiteral("gone.htm")), QString(), error));
    EXPECT_EQ(error, QStringLiteral("the page does not exist"));
    EXPECT_FALSE(ReadRecord(record, 300).has_value());
    qunsetenv("VELMORA_RECORD_FILE");
}

}  // namespace
