#include "ScreenCastDesktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

const QString backend = u"org.freedesktop.impl.portal.desktop.wlr"_s;
const QString sessions = u"/org/freedesktop/portal/desktop/session"_s;

// The object paths just below the path, as the backend's introspection lists them.
QStringList children(const QString& path)
{
    const QDBusMessage reply = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
        backend, path, u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s));
    const QString xml = reply.arguments().value(0).toString();
    static const QRegularExpression node(u"<node name=\"([^\"]+)\""_s);
    QStringList names;
    for (auto match = node.globalMatch(xml); match.hasNext();)
        names.append(path + u'/' + match.next().captured(1));
    return names;
}

} // namespace

bool ScreenCastDesktop::answer(const QString& output)
{
    QFile file(qEnvironmentVariable("VEXET_SCREENCAST_ANSWER"));
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(output.toUtf8() + '\n') > 0;
}

int ScreenCastDesktop::choices()
{
    QFile file(qEnvironmentVariable("VEXET_SCREENCAST_CHOICES"));
    return file.open(QIODevice::ReadOnly) ? int(file.readAll().count('\n')) : 0;
}

int ScreenCastDesktop::closeSessions(const QString& client)
{
    // Session handles are .../session/SENDER/TOKEN, SENDER the unique name without ':' and with '_'.
    QStringList senders;
    if (client.isEmpty())
        senders = children(sessions);
    else
        senders.append(sessions + u'/' + client.mid(client.startsWith(u':') ? 1 : 0).replace(u'.', u'_'));
    int closed = 0;
    for (const QString& sender : std::as_const(senders)) {
        for (const QString& session : children(sender)) {
            const QDBusMessage reply = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
                backend, session, u"org.freedesktop.impl.portal.Session"_s, u"Close"_s));
            if (reply.type() == QDBusMessage::ReplyMessage)
                ++closed;
        }
    }
    return closed;
}
