// Help: each topic reaches the viewer as a page and an anchor, failures are told in the user's
// language, the viewer program is let go of at once, and its window shows each topic.

#include "services/Help.h"
#include "platform/helpviewer/HelpWindow.h"
#include "platform/helpviewer/TopicHandover.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include "TestPaths.h"

#include <QAction>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTextBrowser>

#include <gtest/gtest.h>

#include <cerrno>

namespace {

const QString Folder = QStringLiteral("/opt/velmora/Sandpiper");

TEST(HelpTest, EachTopicOpensItsPageAtItsAnchorAndFailuresAreToldInTheUsersLanguage)
{
    const QString rows[][3] = {
        {HelpTopics::Main, QStringLiteral("options.htm"), QStringLiteral("convertPDF")},
        {HelpTopics::DocumentType, QStringLiteral("options.htm"), QStringLiteral("convertPDFType")},
        {HelpTopics::Advanced, QStringLiteral("options.htm"), QStringLiteral("convertPDFAdvanced")},
        {QStringLiteral("::/Vorek/use.htm"), QStringLiteral("Vorek/use.htm"), QString()},
    };
    for (const auto& [topic, page, anchor] : rows) {
        FakeHelpViewer viewer;
        ShowHelpTopic(viewer, QStringLiteral("/opt/velmora"), topic, nullptr);
        EXPECT_EQ(viewer.pages, QStringList{Folder + u'/' + page});
        EXPECT_EQ(viewer.anchors, QStringList{anchor});
        EXPECT_EQ(viewer.contents, QStringList{Folder + QStringLiteral("/Vorek/use.htm")});
    }
    // F1's help is the start page of the help file set at the start.
    SetApplicationHelpFile(ApplicationHelpFile(QStringLiteral("/srv/app")));
    FakeHelpViewer viewer;
    ShowApplicationHelp(viewer, nullptr);
    EXPECT_EQ(viewer.pages, QStringList{QStringLiteral("/srv/app/Sandpiper/Vorek/use.htm")});

    const bool japanese = qEnvironmentVariable("VELMORA_TEST_LOCALE") == QStringLiteral("ja");
    viewer.failure = HelpViewer::Failure::ViewerDidNotStart;
    SeenMessage seen;
    AnswerNextMessageBox(QMessageBox::Ok, &seen);
    ShowHelpTopic(viewer, QStringLiteral("/opt/velmora"), HelpTopics::Advanced, nullptr);
    EXPECT_EQ(seen.text, japanese ? QStringLiteral("ヘルプ ページ %1 を開けませんでした: "
                                                   "ヘルプ ビューアーを起動できませんでした")
                                        .arg(Folder + QStringLiteral("/options.htm"))
                                  : QStringLiteral("Unable to open the help page %1: the help "
                                                   "viewer could not be started")
                                        .arg(Folder + QStringLiteral("/options.htm")));
}

// The viewer program gets the pages and is let go of: one that never ends doesn't hold the call.
TEST(HelpTest, TheViewerProgramIsStartedForAPageThatExistsAndNotWaitedFor)
{
    const QString page = QStringLiteral(VELMORA_APP_DIR "/Sandpiper/options.htm");
    FakeLauncher launcher;
    launcher.programs.insert(QStringLiteral("/opt/velmora/VelmoraHelp"), {-1, 0});
    const auto viewer = CreateHelpViewer(launcher, QStringLiteral("/opt/velmora"));
    EXPECT_EQ(viewer->ShowPage(QStringLiteral("c.htm"), page, QStringLiteral("convertPDF")),
              HelpViewer::Failure::None);
    EXPECT_EQ(launcher.requests.value(0).arguments,
              (QStringList{QStringLiteral("c.htm"), page, QStringLiteral("convertPDF")}));
    EXPECT_EQ(viewer->ShowPage(page, Folder + QStringLiteral("/gone.htm"), QString()),
              HelpViewer::Failure::NoSuchPage);
    launcher.startError = ENOENT;
    EXPECT_EQ(viewer->ShowPage(page, page, QString()), HelpViewer::Failure::ViewerDidNotStart);
    EXPECT_EQ(launcher.requests.size(), 2) << "a missing page starts no viewer";
}

// The real viewer window on the shipped pages: each topic shows its section at the top, and
// back and contents move between pages.
TEST(HelpTest, TheViewerWindowShowsEachTopicAtItsAnchor)
{
    const QString folder = QStringLiteral(VELMORA_APP_DIR "/Sandpiper");
    HelpWindow window(QUrl::fromLocalFile(folder + QStringLiteral("/Vorek/use.htm")), false);
    window.resize(600, 300);
    window.show();
    int previous = -1;
    for (const char* anchor :
         {"convertPDF", "convertPDFType", "convertPDFConversion", "convertPDFAdvanced"}) {
        QUrl page = QUrl::fromLocalFile(folder + QStringLiteral("/options.htm"));
        page.setFragment(QLatin1String(anchor));
        window.ShowTopic(page);
        ProcessPendingEvents();
        const int offset = window.Browser().verticalScrollBar()->value();
        EXPECT_GT(offset, previous) << anchor << " is further down the page";
        previous = offset;
    }
    auto* contents = window.findChild<QAction*>(QStringLiteral("ActionContents"));
    auto* back = window.findChild<QAction*>(QStringLiteral("ActionBack"));
    ASSERT_TRUE(contents && back);
    contents->trigger();
    EXPECT_TRUE(window.Browser().source().path().endsWith(QStringLiteral("/Vorek/use.htm")));
    back->trigger();
    EXPECT_TRUE(window.Browser().source().path().endsWith(QStringLiteral("/options.htm")));
}

TEST(HelpTest, AViewerStartedWhileAnotherRunsHandsItsTopicOver)
{
    const QString channel =
        QStringLiteral("velmora-help-test-%1").arg(QCoreApplication::applicationPid());
    QUrl topic = QUrl::fromLocalFile(QStringLiteral(VELMORA_APP_DIR "/Sandpiper/options.htm"));
    topic.setFragment(QStringLiteral("convertPDFType"));
    // Nobody listens yet: the viewer opens a window of its own.
    EXPECT_FALSE(HandTopicOver(channel, topic));

    QList<QUrl> shown;
    TopicListener listener([&shown](const QUrl& page) { shown.append(page); });
    ASSERT_TRUE(listener.Listen(channel));
    TopicListener second([](const QUrl&) {});
    EXPECT_FALSE(second.Listen(channel)) << "one window per user and display";

    // Only pages of the help on this machine are shown; the last one handed over ends the wait.
    for (const QUrl& page : {QUrl(QStringLiteral("https://example.com/")),
                             QUrl::fromLocalFile(QStringLiteral("/no/such/page.htm")), topic})
        EXPECT_TRUE(HandTopicOver(channel, page));
    QElapsedTimer waited;
    waited.start();
    while (shown.isEmpty() && waited.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    ProcessPendingEvents();
    EXPECT_EQ(shown, QList<QUrl>{topic});
}

}  // namespace
