#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QLocalServer;

// One Vesk per user: a second start hands its request to the first over a
// local socket and exits, so two windows never write the same library.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    enum class Start { First, HandedOff, Unanswered };

    // `socketPath` names the per-user channel (socketPathForUser()).
    explicit SingleInstance(QString socketPath, QObject *parent = nullptr);
    ~SingleInstance() override;

    // The user's channel: in the per-user runtime folder.
    static QString socketPathForUser();

    // Gives `message` to a running instance (HandedOff), or, when none
    // answers, starts listening as the first one (First). Unanswered: one
    // holds the channel but did not take the message in time.
    Start start(const QByteArray &message);

    static constexpr QByteArrayView activateMessage = "activate";

Q_SIGNALS:
    void messageReceived(const QByteArray &message);

private:
    bool handOff(const QByteArray &message, bool *connected);
    void acceptConnections();

    QString m_socketPath;
    QLocalServer *m_server = nullptr;
};
