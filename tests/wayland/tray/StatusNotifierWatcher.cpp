#include "StatusNotifierWatcher.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServiceWatcher>

using namespace Qt::StringLiterals;

StatusNotifierWatcher::StatusNotifierWatcher(bool pretendHost, QObject* parent)
    : QObject(parent)
    , m_serviceWatcher(new QDBusServiceWatcher(
          QString(), QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForUnregistration, this))
    , m_pretendHost(pretendHost)
{
    connect(m_serviceWatcher, &QDBusServiceWatcher::serviceUnregistered, this,
        &StatusNotifierWatcher::serviceGone);
}

void StatusNotifierWatcher::setPretendHost(bool on)
{
    if (on == m_pretendHost)
        return;
    const bool was = isHostRegistered();
    m_pretendHost = on;
    announceHostChange(was);
}

// Like KDE's watcher: a path means an item of the caller at that path, anything else is a bus
// name whose item lives at /StatusNotifierItem. The item is known as "service/path".
void StatusNotifierWatcher::RegisterStatusNotifierItem(const QString& serviceOrPath)
{
    QString service = serviceOrPath;
    QString objectPath = u"/StatusNotifierItem"_s;
    if (serviceOrPath.startsWith(u'/')) {
        service = message().service();
        objectPath = serviceOrPath;
    }
    const QString item = service + objectPath;
    if (m_items.contains(item))
        return;
    if (!connection().interface()->isServiceRegistered(service).value()) {
        sendErrorReply(QDBusError::ServiceUnknown, u"%1 is not on the bus"_s.arg(service));
        return;
    }
    m_serviceWatcher->addWatchedService(service);
    m_items.append(item);
    Q_EMIT StatusNotifierItemRegistered(item);
    announceProperty(u"RegisteredStatusNotifierItems"_s, m_items);
}

void StatusNotifierWatcher::RegisterStatusNotifierHost(const QString& service)
{
    if (m_hosts.contains(service))
        return;
    const bool was = isHostRegistered();
    m_serviceWatcher->addWatchedService(service);
    m_hosts.append(service);
    announceHostChange(was);
}

void StatusNotifierWatcher::serviceGone(const QString& service)
{
    m_serviceWatcher->removeWatchedService(service);
    const QString prefix = service + u'/';
    bool itemsChanged = false;
    for (qsizetype i = m_items.size() - 1; i >= 0; --i) {
        if (!m_items.at(i).startsWith(prefix))
            continue;
        const QString item = m_items.takeAt(i);
        itemsChanged = true;
        Q_EMIT StatusNotifierItemUnregistered(item);
    }
    if (itemsChanged)
        announceProperty(u"RegisteredStatusNotifierItems"_s, m_items);
    if (m_hosts.contains(service)) {
        const bool was = isHostRegistered();
        m_hosts.removeAll(service);
        announceHostChange(was);
    }
}

void StatusNotifierWatcher::announceHostChange(bool wasRegistered)
{
    const bool registered = isHostRegistered();
    if (registered == wasRegistered)
        return;
    if (registered)
        Q_EMIT StatusNotifierHostRegistered();
    else
        Q_EMIT StatusNotifierHostUnregistered();
    announceProperty(u"IsStatusNotifierHostRegistered"_s, registered);
}

// org.freedesktop.DBus.Properties.PropertiesChanged, for clients that cache the properties.
void StatusNotifierWatcher::announceProperty(const QString& name, const QVariant& value)
{
    QDBusMessage signal = QDBusMessage::createSignal(
        QString::fromLatin1(path), u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s);
    signal << QString::fromLatin1(interface) << QVariantMap { { name, value } } << QStringList();
    QDBusConnection::sessionBus().send(signal);
}
