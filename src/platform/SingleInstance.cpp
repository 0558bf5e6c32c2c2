#include "SingleInstance.h"

#include <QDir>
#include <QLocalSocket>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
const QByteArray reopenMessage = "reopen\n";
}

SingleInstance::SingleInstance(QString socketPath, QObject* parent)
    : QObject(parent)
    , m_socketPath(std::move(socketPath))
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* client = m_server.nextPendingConnection()) {
            connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
            connect(client, &QLocalSocket::readyRead, this, [this, client] {
                if (client->canReadLine() && client->readLine() == reopenMessage)
                    Q_EMIT reopenRequested();
            });
        }
    });
}

QString SingleInstance::defaultSocketPath()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString folder = !runtime.isEmpty() && QDir(runtime).exists() ? runtime : QDir::tempPath();
    return folder + u"/vexet-%1.socket"_s.arg(::getuid());
}

bool SingleInstance::askRunningInstanceToReopen()
{
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(2000))
        return false;
    socket.write(reopenMessage);
    const bool sent = socket.waitForBytesWritten(2000);
    socket.disconnectFromServer();
    return sent;
}

bool SingleInstance::listen()
{
    if (m_server.listen(m_socketPath))
        return true;
    // Nobody answered a moment ago, so whatever is there was left by an instance that died.
    QLocalServer::removeServer(m_socketPath);
    return m_server.listen(m_socketPath);
}
