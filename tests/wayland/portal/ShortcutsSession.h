#pragma once

#include "PortalShortcut.h"

#include <QDBusObjectPath>
#include <QList>
#include <QObject>

// One GlobalShortcuts session of a program, as the backend keeps it: exported at the session
// handle the frontend chose, as org.freedesktop.impl.portal.Session (only the members marked
// Q_SCRIPTABLE are on the bus). The frontend calls Close when the program closes the session or
// leaves the bus.
class ShortcutsSession : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.impl.portal.Session")
    Q_PROPERTY(uint version READ version SCRIPTABLE true)

public:
    // A shortcut bound in this session: what the program asked for, and the key the desktop gave
    // it ("" when it gave none).
    struct Binding {
        QString id;
        QString description;
        QString preferredTrigger;
        QString triggerDescription;
    };

    ShortcutsSession(const QDBusObjectPath& handle, const QString& appId, QObject* parent = nullptr);

    uint version() const { return 1; }
    const QDBusObjectPath& handle() const { return m_handle; }
    const QString& appId() const { return m_appId; }

    const QList<Binding>& bindings() const { return m_bindings; }
    void setBindings(QList<Binding> bindings) { m_bindings = std::move(bindings); }
    bool hasBinding(const QString& id) const;
    // Gives the shortcut another key; false if the session has no such shortcut.
    bool setTriggerDescription(const QString& id, const QString& triggerDescription);
    // The bindings as the portal lists them: id, description and trigger_description.
    PortalShortcuts shortcuts() const;

public Q_SLOTS:
    Q_SCRIPTABLE void Close();

Q_SIGNALS:
    // Never sent by this backend: the session ends only when the frontend says so.
    Q_SCRIPTABLE void Closed();
    // The frontend closed the session; it is already off the bus.
    void closedByFrontend();

private:
    QDBusObjectPath m_handle;
    QString m_appId;
    QList<Binding> m_bindings;
};
