#pragma once

#include "GlobalKeys.h"
#include "PortalShortcut.h"

#include <QDBusConnection>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QSet>

class PortalRequest;
class QDBusMessage;
class QDBusPendingCallWatcher;

// Global shortcuts bound by the desktop through org.freedesktop.portal.GlobalShortcuts: one portal
// session for the program's lifetime, the combinations proposed as preferred triggers, and what
// the desktop really bound reported back (at the bind, and again at every ShortcutsChanged).
// Where no portal offers the interface, every id is answered as unavailable and the binder is the
// user. Everything runs on the main loop; nothing waits for the bus.
class PortalGlobalKeys : public QObject, public GlobalKeys {
    Q_OBJECT

public:
    // The desktop entry's id, under which an unsandboxed program registers with the portal host.
    static inline const QString applicationId = QStringLiteral("vexet");

    explicit PortalGlobalKeys(QDBusConnection bus = QDBusConnection::sessionBus(), QObject* parent = nullptr);
    ~PortalGlobalKeys() override;

    ShortcutBinder binder() const override;
    void bind(const QList<Request>& requests) override;
    void release(int id) override { m_released.insert(id); }
    // The portal's ConfigureShortcuts, offered from its interface version 2.
    bool canConfigure() const override { return m_version >= 2 && !m_session.isEmpty(); }
    void configure() override;

    // The portal session's object path once the desktop opened one.
    const QString& session() const { return m_session; }

private Q_SLOTS:
    void activated(const QDBusMessage& message);
    void shortcutsChanged(const QDBusMessage& message);

private:
    enum class State {
        probing, // asking whether the portal offers the interface
        absent,
        ready, // offered; no session asked for yet
        opening, // session or binding asked for
        bound,
        failed,
    };

    void probe();
    void versionAnswered(QDBusPendingCallWatcher* watcher);
    void createSession();
    void bindShortcuts();
    void fail();
    // The desktop's list replaces what is known of the bound combinations.
    void take(const QList<PortalShortcut>& shortcuts);
    void answer(const QList<int>& ids, int status);
    QList<PortalShortcut> wantedList() const;
    PortalRequest* newRequest();
    bool isOurs(const QDBusMessage& message) const;

    QDBusConnection m_bus;
    State m_state = State::probing;
    uint m_version = 0;
    QString m_session;
    QMap<int, Request> m_wanted;
    QHash<QString, int> m_ids; // by name
    QHash<QString, QString> m_triggers; // by name: every id the desktop listed, with its trigger
    QList<PortalShortcut> m_created; // the list the session's creation answered with
    QSet<int> m_released;
    PortalRequest* m_request = nullptr;
};
