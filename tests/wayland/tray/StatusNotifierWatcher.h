#pragma once

#include <QDBusContext>
#include <QObject>
#include <QStringList>

class QDBusServiceWatcher;

// The desktop's StatusNotifier watcher (org.kde.StatusNotifierWatcher), as a panel provides it:
// items and hosts register here, and items whose program leaves the bus are dropped. Besides real
// hosts, a pretended one can be switched on and off, so that tests can make the desktop look as
// if it had no tray.
class StatusNotifierWatcher : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ registeredItems)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    static constexpr auto path = "/StatusNotifierWatcher";
    static constexpr auto interface = "org.kde.StatusNotifierWatcher";

    explicit StatusNotifierWatcher(bool pretendHost, QObject* parent = nullptr);

    QStringList registeredItems() const { return m_items; }
    bool isHostRegistered() const { return m_pretendHost || !m_hosts.isEmpty(); }
    int protocolVersion() const { return 0; }

    void setPretendHost(bool on);

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& serviceOrPath);
    void RegisterStatusNotifierHost(const QString& service);

Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& item);
    void StatusNotifierItemUnregistered(const QString& item);
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private:
    void serviceGone(const QString& service);
    void announceHostChange(bool wasRegistered);
    void announceProperty(const QString& name, const QVariant& value);

    QDBusServiceWatcher* m_serviceWatcher;
    QStringList m_items;
    QStringList m_hosts;
    bool m_pretendHost;
};
