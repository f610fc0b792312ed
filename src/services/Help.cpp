#include "services/Help.h"

#include "core/LocalText.h"
#include "platform/HelpViewer.h"
#include "services/MessageBoxes.h"

#include <QDir>

namespace {

// The help is a folder of pages beside the program; a topic names a page inside it.
const QString HelpFolderName = QStringLiteral("Sandpiper");
const QString StartTopic = QStringLiteral("::/Vorek/use.htm");
const QString TopicSeparator = QStringLiteral("::");

QString helpFileProperty;

void showPage(HelpViewer& viewer, const QString& helpFolder, const QString& topic, QWidget* owner)
{
    QString inside = topic;
    if (inside.startsWith(TopicSeparator))
        inside.remove(0, TopicSeparator.size());
    while (inside.startsWith(u'/'))
        inside.remove(0, 1);
    const qsizetype hash = inside.indexOf(u'#');
    const QString page = hash < 0 ? inside : inside.left(hash);
    const QString anchor = hash < 0 ? QString() : inside.mid(hash + 1);
    const QString pageFile = helpFolder + u'/' + page;
    const QString contentsFile = helpFolder + StartTopic.mid(TopicSeparator.size());

    QString reason;
    switch (viewer.ShowPage(contentsFile, pageFile, anchor)) {
    case HelpViewer::Failure::None:
        return;
    case HelpViewer::Failure::NoSuchPage:
        reason =
            LocalText(PlatformTexts::HelpPageMissing, QStringLiteral("the page does not exist"));
        break;
    case HelpViewer::Failure::ViewerDidNotStart:
        reason = LocalText(PlatformTexts::HelpViewerFailed,
                           QStringLiteral("the help viewer could not be started"));
        break;
    }
    ShowMessage(owner,
                LocalText(PlatformTexts::HelpPageFailed,
                          QStringLiteral("Unable to open the help page %1: %2"))
                    .arg(QDir::toNativeSeparators(pageFile), reason),
                MessageIcon::Exclamation);
}

}  // namespace

QString ApplicationHelpFile(const QString& applicationDir)
{
    return applicationDir + u'/' + HelpFolderName + StartTopic;
}

void ShowHelpTopic(HelpViewer& viewer, const QString& applicationDir, const QString& topic,
                   QWidget* owner)
{
    showPage(viewer, applicationDir + u'/' + HelpFolderName, topic, owner);
}

void ShowApplicationHelp(HelpViewer& viewer, QWidget* owner)
{
    const QString helpFile = ApplicationHelpFileProperty();
    const qsizetype separator = helpFile.indexOf(TopicSeparator);
    if (separator < 0)
        showPage(viewer, helpFile, StartTopic, owner);
    else
        showPage(viewer, helpFile.left(separator), helpFile.mid(separator), owner);
}

void SetApplicationHelpFile(const QString& helpFile)
{
    helpFileProperty = helpFile;
}

QString ApplicationHelpFileProperty()
{
    return helpFileProperty;
}
