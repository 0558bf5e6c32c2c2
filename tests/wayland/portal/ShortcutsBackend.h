#pragma once

#include "PortalShortcut.h"
#include "ShortcutsSession.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QJsonObject>
#include <QList>
#include <QStringList>
#include <QVariantMap>

// A desktop's global shortcuts for tests (org.freedesktop.impl.portal.GlobalShortcuts), behind the
// real xdg-desktop-portal frontend on a desktop that has none of its own (sway). BindShortcuts binds
// every shortcut a program asks for to the program's preferred trigger, except the ids it was told
// to leave unbound (as a desktop does whose user already uses that combination): those get no key.
// With bindOnCreate, CreateSession already binds the shortcuts of its "shortcuts" option and
// BindShortcuts binds nothing and answers an empty list, as Plasma 5.27 does; otherwise a session
// starts with none.
// Tests press the keys, change them and read what the backend was given through ShortcutsControl.
class ShortcutsBackend : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.impl.portal.GlobalShortcuts")
    Q_PROPERTY(uint version READ version)

public:
    // object: the exported desktop object (/org/freedesktop/portal/desktop) on bus, where the
    // sessions are exported too.
    ShortcutsBackend(
        const QDBusConnection& bus, const QStringList& unboundIds, bool bindOnCreate, QObject* object);

    uint version() const { return 1; }

    // The key a desktop shows for a preferred trigger such as "ALT+SHIFT+LOGO+3": the parts between
    // the '+' signs, case ignored, with CTRL/CONTROL written "Ctrl", ALT "Alt", SHIFT "Shift",
    // LOGO/SUPER/META "Meta", a single character in upper case and any other key name with only
    // its first letter in upper case ("PRINT" → "Print", "f5" → "F5"), joined again by '+':
    // "Alt+Shift+Meta+3". Blanks around the parts and empty parts go; an empty trigger stays empty.
    static QString readableTrigger(const QString& preferredTrigger);

    // What a press of the shortcut does: Activated, then Deactivated, for the newest open session
    // that bound id. False if there is none.
    bool activate(const QString& id);
    // The user gave the shortcut another key: ShortcutsChanged with the session's whole list, for
    // the newest open session that bound id. False if there is none.
    bool setTrigger(const QString& id, const QString& triggerDescription);
    // What programs handed the backend, for the tests to check (see ShortcutsControl::Received).
    QJsonObject received() const;

public Q_SLOTS:
    uint CreateSession(const QDBusObjectPath& handle, const QDBusObjectPath& sessionHandle,
        const QString& appId, const QVariantMap& options, QVariantMap& results);
    uint BindShortcuts(const QDBusObjectPath& handle, const QDBusObjectPath& sessionHandle,
        const PortalShortcuts& shortcuts, const QString& parentWindow, const QVariantMap& options,
        QVariantMap& results);
    uint ListShortcuts(
        const QDBusObjectPath& handle, const QDBusObjectPath& sessionHandle, QVariantMap& results);

Q_SIGNALS:
    void Activated(const QDBusObjectPath& sessionHandle, const QString& shortcutId, qulonglong timestamp,
        const QVariantMap& options);
    void Deactivated(const QDBusObjectPath& sessionHandle, const QString& shortcutId, qulonglong timestamp,
        const QVariantMap& options);
    void ShortcutsChanged(const QDBusObjectPath& sessionHandle, const PortalShortcuts& shortcuts);

private:
    QList<ShortcutsSession::Binding> bindings(const PortalShortcuts& shortcuts) const;
    ShortcutsSession* session(const QDBusObjectPath& handle) const;
    ShortcutsSession* newestSessionWith(const QString& id) const;
    void sessionClosed(ShortcutsSession* session);

    QDBusConnection m_bus;
    QStringList m_unboundIds;
    bool m_bindOnCreate;
    QList<ShortcutsSession*> m_sessions; // open ones, oldest first; children of this adaptor
    int m_closedSessions = 0;

    // The latest CreateSession and BindShortcuts, as they arrived.
    QString m_appId;
    QStringList m_createOptions;
    PortalShortcuts m_createShortcuts;
    PortalShortcuts m_bound;
    QStringList m_bindOptions;
    QString m_parentWindow;
    int m_bindCalls = 0;
};
