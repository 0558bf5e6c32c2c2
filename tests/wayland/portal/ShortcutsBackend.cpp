#include "ShortcutsBackend.h"

#include <QDateTime>
#include <QJsonArray>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

QJsonArray shortcutsJson(const PortalShortcuts& shortcuts)
{
    QJsonArray list;
    for (const PortalShortcut& shortcut : shortcuts)
        list.append(QJsonObject { { u"id"_s, shortcut.id },
            { u"description"_s, shortcut.properties.value(u"description"_s).toString() },
            { u"preferredTrigger"_s, shortcut.properties.value(u"preferred_trigger"_s).toString() } });
    return list;
}

void log(const QString& text)
{
    std::fprintf(stderr, "vexet-test-portal: %s\n", qPrintable(text));
}

} // namespace

ShortcutsBackend::ShortcutsBackend(
    const QDBusConnection& bus, const QStringList& unboundIds, bool bindOnCreate, QObject* object)
    : QDBusAbstractAdaptor(object)
    , m_bus(bus)
    , m_unboundIds(unboundIds)
    , m_bindOnCreate(bindOnCreate)
{
}

QString ShortcutsBackend::readableTrigger(const QString& preferredTrigger)
{
    QStringList keys;
    for (const QString& part : preferredTrigger.split(u'+')) {
        const QString key = part.trimmed().toUpper();
        if (key.isEmpty())
            continue;
        if (key == u"CTRL"_s || key == u"CONTROL"_s)
            keys.append(u"Ctrl"_s);
        else if (key == u"ALT"_s)
            keys.append(u"Alt"_s);
        else if (key == u"SHIFT"_s)
            keys.append(u"Shift"_s);
        else if (key == u"LOGO"_s || key == u"SUPER"_s || key == u"META"_s)
            keys.append(u"Meta"_s);
        else
            keys.append(key.left(1) + key.mid(1).toLower());
    }
    return keys.join(u'+');
}

QList<ShortcutsSession::Binding> ShortcutsBackend::bindings(const PortalShortcuts& shortcuts) const
{
    QList<ShortcutsSession::Binding> bindings;
    for (const PortalShortcut& shortcut : shortcuts) {
        const QString preferred = shortcut.properties.value(u"preferred_trigger"_s).toString();
        bindings.append({ shortcut.id, shortcut.properties.value(u"description"_s).toString(), preferred,
            m_unboundIds.contains(shortcut.id) ? QString() : readableTrigger(preferred) });
        log(u"bound \"%1\" (\"%2\", properties [%3]) to \"%4\""_s.arg(shortcut.id, preferred,
            shortcut.properties.keys().join(u", "_s), bindings.last().triggerDescription));
    }
    return bindings;
}

ShortcutsSession* ShortcutsBackend::session(const QDBusObjectPath& handle) const
{
    for (ShortcutsSession* candidate : m_sessions) {
        if (candidate->handle() == handle)
            return candidate;
    }
    return nullptr;
}

ShortcutsSession* ShortcutsBackend::newestSessionWith(const QString& id) const
{
    for (auto candidate = m_sessions.crbegin(); candidate != m_sessions.crend(); ++candidate) {
        if ((*candidate)->hasBinding(id))
            return *candidate;
    }
    return nullptr;
}

uint ShortcutsBackend::CreateSession(const QDBusObjectPath&, const QDBusObjectPath& sessionHandle,
    const QString& appId, const QVariantMap& options, QVariantMap& results)
{
    results.clear();
    m_appId = appId;
    m_createOptions = options.keys();
    m_createShortcuts = PortalShortcut::listFrom(options.value(u"shortcuts"_s));
    log(u"CreateSession %1 for \"%2\", options [%3]"_s.arg(
        sessionHandle.path(), appId, m_createOptions.join(u", "_s)));
    if (session(sessionHandle) != nullptr)
        return 2;
    auto* created = new ShortcutsSession(sessionHandle, appId, this);
    const auto exported = QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableSignals
        | QDBusConnection::ExportScriptableProperties;
    if (!m_bus.registerObject(sessionHandle.path(), created, exported)) {
        log(u"cannot export the session %1"_s.arg(sessionHandle.path()));
        delete created;
        return 2;
    }
    connect(created, &ShortcutsSession::closedByFrontend, this, [this, created] { sessionClosed(created); });
    m_sessions.append(created);
    if (m_bindOnCreate)
        created->setBindings(bindings(m_createShortcuts));
    // xdg-desktop-portal 1.16 copies this list into its answer to the program and complains
    // (GLib-CRITICAL) when it is missing.
    results.insert(u"shortcuts"_s, QVariant::fromValue(created->shortcuts()));
    return 0;
}

uint ShortcutsBackend::BindShortcuts(const QDBusObjectPath&, const QDBusObjectPath& sessionHandle,
    const PortalShortcuts& shortcuts, const QString& parentWindow, const QVariantMap& options,
    QVariantMap& results)
{
    results.clear();
    ++m_bindCalls;
    m_bound = shortcuts;
    m_bindOptions = options.keys();
    m_parentWindow = parentWindow;
    log(u"BindShortcuts %1 (parent \"%2\"), options [%3]"_s.arg(
        sessionHandle.path(), parentWindow, m_bindOptions.join(u", "_s)));
    ShortcutsSession* bound = session(sessionHandle);
    if (bound == nullptr) {
        log(u"BindShortcuts for the unknown session %1"_s.arg(sessionHandle.path()));
        return 2;
    }
    // Plasma 5.27 binds nothing here and answers with an empty list.
    if (m_bindOnCreate) {
        results.insert(u"shortcuts"_s, QVariant::fromValue(PortalShortcuts()));
        return 0;
    }
    bound->setBindings(bindings(shortcuts));
    results.insert(u"shortcuts"_s, QVariant::fromValue(bound->shortcuts()));
    return 0;
}

uint ShortcutsBackend::ListShortcuts(
    const QDBusObjectPath&, const QDBusObjectPath& sessionHandle, QVariantMap& results)
{
    results.clear();
    const ShortcutsSession* listed = session(sessionHandle);
    if (listed == nullptr)
        return 2;
    results.insert(u"shortcuts"_s, QVariant::fromValue(listed->shortcuts()));
    return 0;
}

bool ShortcutsBackend::activate(const QString& id)
{
    const ShortcutsSession* pressed = newestSessionWith(id);
    if (pressed == nullptr)
        return false;
    const auto timestamp = qulonglong(QDateTime::currentMSecsSinceEpoch());
    Q_EMIT Activated(pressed->handle(), id, timestamp, {});
    Q_EMIT Deactivated(pressed->handle(), id, timestamp, {});
    return true;
}

bool ShortcutsBackend::setTrigger(const QString& id, const QString& triggerDescription)
{
    ShortcutsSession* changed = newestSessionWith(id);
    if (changed == nullptr || !changed->setTriggerDescription(id, triggerDescription))
        return false;
    Q_EMIT ShortcutsChanged(changed->handle(), changed->shortcuts());
    return true;
}

void ShortcutsBackend::sessionClosed(ShortcutsSession* closed)
{
    log(u"session %1 closed"_s.arg(closed->handle().path()));
    m_bus.unregisterObject(closed->handle().path());
    m_sessions.removeOne(closed);
    ++m_closedSessions;
    closed->deleteLater();
}

QJsonObject ShortcutsBackend::received() const
{
    return {
        { u"appId"_s, m_appId },
        { u"createOptions"_s, QJsonArray::fromStringList(m_createOptions) },
        { u"createShortcuts"_s, shortcutsJson(m_createShortcuts) },
        { u"bound"_s, shortcutsJson(m_bound) },
        { u"bindOptions"_s, QJsonArray::fromStringList(m_bindOptions) },
        { u"bindCalls"_s, m_bindCalls },
        { u"parentWindow"_s, m_parentWindow },
        { u"openSessions"_s, int(m_sessions.size()) },
        { u"closedSessions"_s, m_closedSessions },
    };
}
