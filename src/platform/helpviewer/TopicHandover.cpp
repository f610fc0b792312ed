#include "platform/helpviewer/TopicHandover.h"

#include <QFileInfo>
#include <QLocalSocket>

#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int ConnectTimeoutMs = 1000;
// A topic is one URL of a local page; anything longer is no viewer's.
constexpr qint64 LongestTopic = qint64{64} * 1024;

bool SameUser(const QLocalSocket& socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer,
                      &size) == 0 &&
           peer.uid == getuid();
}

}  // namespace

QString HelpChannelName()
{
    const QString display =
        qEnvironmentVariable("WAYLAND_DISPLAY", qEnvironmentVariable("DISPLAY"));
    return QStringLiteral("velmora-help-%1-%2").arg(getuid()).arg(display);
}

bool HandTopicOver(const QString& channel, const QUrl& page)
{
    QLocalSocket socket;
    socket.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    socket.connectToServer(channel);
    if (!socket.waitForConnected(ConnectTimeoutMs))
        return false;
    socket.write(page.toEncoded() + '\n');
    const bool sent = socket.waitForBytesWritten(ConnectTimeoutMs);
    socket.disconnectFromServer();
    return sent;
}

TopicListener::TopicListener(std::function<void(const QUrl&)> show, QObject* parent)
    : QObject(parent), m_show(std::move(show))
{
    m_server.setSocketOptions(QLocalServer::AbstractNamespaceOption);
    connect(&m_server, &QLocalServer::newConnection, this, &TopicListener::accept);
}

bool TopicListener::Listen(const QString& channel)
{
    return m_server.listen(channel);
}

void TopicListener::accept()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (!SameUser(*socket)) {
            socket->abort();
            continue;
        }
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine()) {
                if (socket->bytesAvailable() > LongestTopic)
                    socket->abort();
                return;
            }
            const QUrl page = QUrl::fromEncoded(socket->readLine().trimmed());
            // Only pages of the help on this machine are shown, as from the command line.
            if (page.isLocalFile() && QFileInfo(page.toLocalFile()).isFile())
                m_show(page);
        });
    }
}
