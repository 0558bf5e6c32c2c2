#include "SingleInstance.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QTimer>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray okReply = "ok";
const QByteArray errorReplyPrefix = "error ";
// Longer than any command; a line that does not end by then is not one.
constexpr qint64 longestLine = 256;
// A connection that says nothing is dropped after this long.
constexpr int idleMs = 10000;

// The other end of a connection runs as this process's user.
bool fromThisUser(qintptr descriptor)
{
    ucred credentials {};
    socklen_t size = sizeof credentials;
    return ::getsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0
        && size == sizeof credentials && credentials.uid == ::geteuid();
}

// A connected socket to path, or -1 when nothing listens there.
int connectTo(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || name.size() >= qsizetype(sizeof address.sun_path))
        return -1;
    std::copy(name.begin(), name.end(), address.sun_path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return -1;
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

bool sendAll(int descriptor, QByteArray data)
{
    while (!data.isEmpty()) {
        const ssize_t sent = ::send(descriptor, data.constData(), size_t(data.size()), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return false;
        data.remove(0, sent);
    }
    return true;
}

// The first line that arrives, without its end; empty when none came in time.
QByteArray receiveLine(int descriptor, QDeadlineTimer deadline)
{
    QByteArray received;
    while (!received.contains('\n') && received.size() <= longestLine) {
        pollfd wait { descriptor, POLLIN, 0 };
        const int ready = ::poll(&wait, 1, int(deadline.remainingTime()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return QByteArray();
        char buffer[longestLine];
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return QByteArray();
        received.append(buffer, count);
    }
    const qsizetype end = received.indexOf('\n');
    return end < 0 ? QByteArray() : received.left(end);
}

QString noReplyText()
{
    return u"Çalışan Vexet yanıt vermedi."_s;
}

} // namespace

SingleInstance::SingleInstance(QString socketPath, QObject* parent)
    : QObject(parent)
    , m_socketPath(std::move(socketPath))
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* client = m_server.nextPendingConnection())
            accept(client);
    });
}

bool SingleInstance::listen()
{
    if (m_server.listen(m_socketPath))
        return true;
    // Nobody answered a moment ago, so whatever is there was left by an instance that died.
    QLocalServer::removeServer(m_socketPath);
    return m_server.listen(m_socketPath);
}

void SingleInstance::accept(QLocalSocket* client)
{
    connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    if (!fromThisUser(client->socketDescriptor())) {
        client->abort();
        client->deleteLater();
        return;
    }
    connect(client, &QLocalSocket::readyRead, this, [this, client] { read(client); });
    QTimer::singleShot(idleMs, client, [client] {
        client->abort();
        client->deleteLater();
    });
}

void SingleInstance::read(QLocalSocket* client)
{
    if (!client->canReadLine() && client->bytesAvailable() <= longestLine)
        return; // the rest of the line is still on its way
    QByteArray line = client->readLine(longestLine + 1);
    if (line.endsWith('\n'))
        line.chop(1);
    disconnect(client, &QLocalSocket::readyRead, this, nullptr); // one command per connection
    const Result<AppCommand> command = AppCommand::fromMessage(line);
    if (!command) {
        reply(client, errorReplyPrefix + command.error().localizedDescription().toUtf8());
        return;
    }
    reply(client, okReply);
    QMetaObject::invokeMethod(
        this, [this, accepted = command.value()] { Q_EMIT commandReceived(accepted); }, Qt::QueuedConnection);
}

void SingleInstance::reply(QLocalSocket* client, const QByteArray& line)
{
    client->write(line + '\n');
    client->flush();
    client->disconnectFromServer(); // after what is still to be written
}

SingleInstance::HandOver SingleInstance::handOver(
    const QString& socketPath, const AppCommand& command, int timeoutMs, bool waitForListener)
{
    const QDeadlineTimer deadline(timeoutMs);
    int descriptor = connectTo(socketPath);
    while (descriptor < 0 && waitForListener && !deadline.hasExpired()) {
        ::usleep(20000);
        descriptor = connectTo(socketPath);
    }
    if (descriptor < 0 && waitForListener)
        return { HandOver::Outcome::refused, noReplyText() };
    if (descriptor < 0)
        return { HandOver::Outcome::nobodyRunning, QString() };
    QByteArray answer;
    if (sendAll(descriptor, command.message() + '\n'))
        answer = receiveLine(descriptor, deadline);
    ::close(descriptor);
    if (answer == okReply)
        return { HandOver::Outcome::accepted, QString() };
    if (answer.startsWith(errorReplyPrefix) && answer.size() > errorReplyPrefix.size())
        return { HandOver::Outcome::refused, QString::fromUtf8(answer.mid(errorReplyPrefix.size())) };
    return { HandOver::Outcome::refused, noReplyText() };
}

bool SingleInstance::takeLock(const QString& socketPath)
{
    const int descriptor
        = ::open(QFile::encodeName(socketPath + u".lock"_s).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return true;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        return true; // never closed: the lock goes when the process ends, however it ends
    ::close(descriptor);
    return false;
}

Result<QString> SingleInstance::defaultSocketPath()
{
    const QString fallback = QDir::tempPath() + u"/vexet-%1"_s.arg(::geteuid());
    const Result<QString> folder = privateFolder(qEnvironmentVariable("XDG_RUNTIME_DIR"), fallback);
    if (!folder)
        return folder.error();
    return folder.value() + u"/vexet.socket"_s;
}

Result<QString> SingleInstance::privateFolder(const QString& runtimeDir, const QString& fallback)
{
    QStringList reasons;
    if (!runtimeDir.isEmpty()) {
        const QString reason = unsafeFolderReason(runtimeDir);
        if (reason.isEmpty())
            return runtimeDir;
        reasons.append(reason);
    }
    const QByteArray name = QFile::encodeName(fallback);
    if (::mkdir(name.constData(), 0700) == 0) {
        ::chmod(name.constData(), 0700); // what the umask took away
    } else if (errno != EEXIST) {
        reasons.append(u"%1 oluşturulamadı."_s.arg(fallback));
        return Error(u"Vexet.Command"_s, 2, reasons.join(u' '));
    }
    const QString reason = unsafeFolderReason(fallback);
    if (reason.isEmpty())
        return fallback;
    reasons.append(reason);
    return Error(u"Vexet.Command"_s, 2, reasons.join(u' '));
}

QString SingleInstance::unsafeFolderReason(const QString& folder)
{
    struct stat info { };
    if (::lstat(QFile::encodeName(folder).constData(), &info) != 0)
        return u"%1 bulunamadı."_s.arg(folder);
    if (!S_ISDIR(info.st_mode))
        return u"%1 gerçek bir klasör değil."_s.arg(folder);
    if (info.st_uid != ::geteuid())
        return u"%1 başka bir kullanıcıya ait."_s.arg(folder);
    if ((info.st_mode & 0777) != 0700)
        return u"%1 klasörünün izinleri %2, 700 olmalı."_s.arg(
            folder, QString::number(info.st_mode & 0777, 8));
    return QString();
}
