#pragma once

// One help window per user and display: a viewer started while another one runs hands its
// topic over to that one and ends, as a compiled help viewer shows each topic in the window it
// already has open. The channel is a local socket in the abstract namespace, so it leaves no
// file behind, and only the same user's viewers are listened to.

#include <QLocalServer>
#include <QObject>
#include <QUrl>

#include <functional>

// The channel of this user's viewers on this display.
QString HelpChannelName();

// True when a viewer listening on `channel` took `page`.
bool HandTopicOver(const QString& channel, const QUrl& page);

class TopicListener final : public QObject
{
    Q_OBJECT

public:
    // `show` gets each local page handed over.
    explicit TopicListener(std::function<void(const QUrl&)> show, QObject* parent = nullptr);

    // False when another viewer took the channel first; this one then just shows its own topic.
    bool Listen(const QString& channel);

private:
    void accept();

    std::function<void(const QUrl&)> m_show;
    QLocalServer m_server;
};
