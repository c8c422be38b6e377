#include "SingleInstance.h"

#include "AppIdentity.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

namespace {

constexpr int answerTimeoutMs = 3000;
constexpr char reply[] = "ok\n";

} // namespace

SingleInstance::SingleInstance(QString socketPath, QObject *parent)
    : QObject(parent), m_socketPath(std::move(socketPath))
{
}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::socketPathForUser()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + u"/" + AppIdentity::appId.toString() + u".instance";
}

SingleInstance::Start SingleInstance::start(const QByteArray &message)
{
    bool connected = false;
    if (handOff(message, &connected))
        return Start::HandedOff;
    if (connected)
        return Start::Unanswered;

    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(m_socketPath)) {
        // Nobody answered on it: a channel left by a Vesk that crashed.
        QLocalServer::removeServer(m_socketPath);
        if (!m_server->listen(m_socketPath)) {
            qWarning("Vesk: cannot listen for other starts on %s: %s", qPrintable(m_socketPath),
                     qPrintable(m_server->errorString()));
            return Start::First;
        }
    }
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::acceptConnections);
    return Start::First;
}

bool SingleInstance::handOff(const QByteArray &message, bool *connected)
{
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(answerTimeoutMs))
        return false;
    *connected = true;
    socket.write(message + '\n');
    if (!socket.waitForBytesWritten(answerTimeoutMs))
        return false;
    QByteArray answer;
    while (!answer.endsWith('\n') && socket.waitForReadyRead(answerTimeoutMs))
        answer += socket.readAll();
    return answer == reply;
}

void SingleInstance::acceptConnections()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine())
                return;
            const QByteArray message = socket->readLine().trimmed();
            socket->write(reply);
            socket->flush();
            Q_EMIT messageReceived(message);
        });
    }
}
