#include "PortalGlobalKeys.h"

#include "PortalRequest.h"
#include "PortalShortcut.h"
#include "PortalTrigger.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;

} // namespace

PortalGlobalKeys::PortalGlobalKeys(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    PortalShortcut::registerTypes();
    probe();
}

PortalGlobalKeys::~PortalGlobalKeys()
{
    delete m_request;
    if (!m_session.isEmpty()) {
        m_bus.call(QDBusMessage::createMethodCall(
                       PortalRequest::service, m_session, u"org.freedesktop.portal.Session"_s, u"Close"_s),
            QDBus::NoBlock);
    }
}

ShortcutBinder PortalGlobalKeys::binder() const
{
    return m_state == State::absent ? ShortcutBinder::user : ShortcutBinder::desktop;
}

void PortalGlobalKeys::probe()
{
    if (!m_bus.isConnected()) {
        m_state = State::absent;
        return;
    }
    // Newer portals want an unsandboxed caller to say which desktop entry it is before anything
    // else; older ones lack the registry, and either answer is fine.
    QDBusMessage registration = QDBusMessage::createMethodCall(PortalRequest::service, PortalRequest::path,
        u"org.freedesktop.host.portal.Registry"_s, u"Register"_s);
    registration.setArguments({ applicationId, QVariantMap() });
    auto* registered = new QDBusPendingCallWatcher(m_bus.asyncCall(registration), this);
    connect(registered, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* watcher) {
        watcher->deleteLater();
        QDBusMessage version = QDBusMessage::createMethodCall(
            PortalRequest::service, PortalRequest::path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        version.setArguments({ shortcutsInterface, u"version"_s });
        auto* answered = new QDBusPendingCallWatcher(m_bus.asyncCall(version), this);
        connect(answered, &QDBusPendingCallWatcher::finished, this, &PortalGlobalKeys::versionAnswered);
    });
}

void PortalGlobalKeys::versionAnswered(QDBusPendingCallWatcher* watcher)
{
    watcher->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (reply.isError()) {
        // No portal, or none that offers the interface: the desktop binds only commands.
        m_state = State::absent;
        answer(m_wanted.keys(), unavailable);
        return;
    }
    m_version = reply.value().variant().toUInt();
    m_state = State::ready;
    if (!m_wanted.isEmpty())
        createSession();
}

void PortalGlobalKeys::bind(const QList<Request>& requests)
{
    QList<int> ids;
    bool known = true;
    for (const Request& request : requests) {
        m_wanted.insert(request.id, request);
        m_ids.insert(request.name, request.id);
        m_released.remove(request.id);
        ids.append(request.id);
        known = known && m_triggers.contains(request.name);
    }
    switch (m_state) {
    case State::probing:
    case State::opening:
        return; // answered when the desktop is
    case State::absent:
        answer(ids, unavailable);
        return;
    case State::failed:
        answer(ids, -1);
        return;
    case State::ready:
        createSession();
        return;
    case State::bound:
        // The session's combinations stay as the desktop keeps them; only a new id is asked for.
        if (known)
            answer(ids, 0);
        else
            bindShortcuts();
        return;
    }
}

PortalRequest* PortalGlobalKeys::newRequest()
{
    delete m_request;
    m_request = new PortalRequest(m_bus, this);
    return m_request;
}

void PortalGlobalKeys::createSession()
{
    m_state = State::opening;
    PortalRequest* request = newRequest();
    connect(request, &PortalRequest::finished, this, [this, request](const PortalResponse& response) {
        request->deleteLater();
        m_request = nullptr;
        m_session = PortalRequest::pathOf(response.results.value(u"session_handle"_s));
        if (response.code != PortalResponse::success || m_session.isEmpty()) {
            fail();
            return;
        }
        // What a desktop bound from the creation options already (Plasma 5.27).
        m_created = PortalShortcut::listFrom(response.results.value(u"shortcuts"_s));
        // Told apart by the session handle (see PortalRequest on matching the portal's name).
        m_bus.connect(QString(), PortalRequest::path, shortcutsInterface, u"Activated"_s, this,
            SLOT(activated(QDBusMessage)));
        m_bus.connect(QString(), PortalRequest::path, shortcutsInterface, u"ShortcutsChanged"_s, this,
            SLOT(shortcutsChanged(QDBusMessage)));
        bindShortcuts();
    });
    // Some desktops (KDE Plasma 5.27) read the shortcuts only from the session's creation options.
    request->call(shortcutsInterface, u"CreateSession"_s, {},
        { { u"session_handle_token"_s, u"vexet"_s + QUuid::createUuid().toString(QUuid::Id128) },
            { u"shortcuts"_s, QVariant::fromValue(wantedList()) } });
}

void PortalGlobalKeys::bindShortcuts()
{
    m_state = State::opening;
    PortalRequest* request = newRequest();
    connect(request, &PortalRequest::finished, this, [this, request](const PortalResponse& response) {
        request->deleteLater();
        m_request = nullptr;
        if (response.code == PortalResponse::other) {
            fail();
            return;
        }
        // Refused by the user: a session without any binding. A desktop that took the shortcuts at
        // the session's creation answers here with an empty list.
        m_state = State::bound;
        PortalShortcuts bound = response.code == PortalResponse::success
            ? PortalShortcut::listFrom(response.results.value(u"shortcuts"_s))
            : PortalShortcuts();
        take(bound.isEmpty() && response.code == PortalResponse::success ? m_created : bound);
    });
    request->call(shortcutsInterface, u"BindShortcuts"_s,
        { QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(wantedList()), QString() });
}

void PortalGlobalKeys::fail()
{
    m_state = State::failed;
    answer(m_wanted.keys(), -1);
}

QList<PortalShortcut> PortalGlobalKeys::wantedList() const
{
    QList<PortalShortcut> list;
    for (const Request& request : m_wanted) {
        QVariantMap properties { { u"description"_s, request.description } };
        if (const QString trigger = PortalTrigger::fromShortcut(request.keyCode, request.modifiers);
            !trigger.isEmpty())
            properties.insert(u"preferred_trigger"_s, trigger);
        list.append({ request.name, properties });
    }
    return list;
}

void PortalGlobalKeys::take(const QList<PortalShortcut>& shortcuts)
{
    m_triggers.clear();
    for (const PortalShortcut& shortcut : shortcuts)
        m_triggers.insert(shortcut.id, shortcut.properties.value(u"trigger_description"_s).toString());
    QList<Binding> bindings;
    for (const Request& request : std::as_const(m_wanted)) {
        const auto bound = m_triggers.constFind(request.name);
        bindings.append({ request.id, bound == m_triggers.cend() ? -1 : 0,
            bound == m_triggers.cend() ? QString() : *bound });
    }
    if (onBound)
        onBound(bindings);
}

void PortalGlobalKeys::answer(const QList<int>& ids, int status)
{
    QList<Binding> bindings;
    for (int id : ids) {
        const QString name = m_wanted.value(id).name;
        bindings.append({ id, status, status == 0 ? m_triggers.value(name) : QString() });
    }
    if (onBound && !bindings.isEmpty())
        onBound(bindings);
}

bool PortalGlobalKeys::isOurs(const QDBusMessage& message) const
{
    return !message.arguments().isEmpty()
        && PortalRequest::pathOf(message.arguments().constFirst()) == m_session;
}

void PortalGlobalKeys::activated(const QDBusMessage& message)
{
    if (!isOurs(message) || message.arguments().size() < 2)
        return;
    const auto id = m_ids.constFind(message.arguments().at(1).toString());
    if (id != m_ids.cend() && !m_released.contains(*id) && onPressed)
        onPressed(*id);
}

void PortalGlobalKeys::shortcutsChanged(const QDBusMessage& message)
{
    if (isOurs(message) && message.arguments().size() >= 2 && m_state == State::bound)
        take(PortalShortcut::listFrom(message.arguments().at(1)));
}

void PortalGlobalKeys::configure()
{
    if (!canConfigure())
        return;
    QDBusMessage message = QDBusMessage::createMethodCall(
        PortalRequest::service, PortalRequest::path, shortcutsInterface, u"ConfigureShortcuts"_s);
    message.setArguments({ QVariant::fromValue(QDBusObjectPath(m_session)), QString(), QVariantMap() });
    m_bus.asyncCall(message);
}
