// VelmoraHelp: shows one topic of the converter's help in a window of its own, or in the
// window of the viewer already running for this user.
//   VelmoraHelp <contents-page> <page> [anchor]

#include "platform/UserLanguage.h"
#include "platform/helpviewer/HelpWindow.h"
#include "platform/helpviewer/TopicHandover.h"

#include <QApplication>
#include <QFileInfo>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3 || !QFileInfo(arguments.at(2)).isFile())
        return 2;
    QUrl page = QUrl::fromLocalFile(QFileInfo(arguments.at(2)).absoluteFilePath());
    if (arguments.size() > 3 && !arguments.at(3).isEmpty())
        page.setFragment(arguments.at(3));
    const QString channel = HelpChannelName();
    if (HandTopicOver(channel, page))
        return 0;
    HelpWindow window(QUrl::fromLocalFile(QFileInfo(arguments.at(1)).absoluteFilePath()),
                      GetUserDefaultLangID() == 1041);
    TopicListener listener([&window](const QUrl& topic) {
        window.ShowTopic(topic);
        window.raise();
        window.activateWindow();
    });
    listener.Listen(channel);
    window.ShowTopic(page);
    window.show();
    return QApplication::exec();
}
