#include "TrayProbe.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDateTime>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;
const QString itemInterface = u"org.kde.StatusNotifierItem"_s;
const QString menuInterface = u"com.canonical.dbusmenu"_s;
constexpr int callTimeoutMs = 20000;

QPair<QString, QString> splitItem(const QString& item)
{
    const qsizetype slash = item.indexOf(u'/');
    if (slash <= 0)
        return { item, u"/StatusNotifierItem"_s };
    return { item.left(slash), item.mid(slash) };
}

// One node of a dbusmenu layout: (ia{sv}av), the children being variants of the same.
TrayProbe::MenuEntry readEntry(const QDBusArgument& argument)
{
    TrayProbe::MenuEntry entry;
    QVariantMap properties;
    argument.beginStructure();
    argument >> entry.id >> properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        entry.children.append(readEntry(child.variant().value<QDBusArgument>()));
    }
    argument.endArray();
    argument.endStructure();

    entry.rawLabel = properties.value(u"label"_s).toString();
    entry.label = TrayProbe::withoutMnemonic(entry.rawLabel);
    entry.enabled = properties.value(u"enabled"_s, true).toBool();
    entry.visible = properties.value(u"visible"_s, true).toBool();
    entry.separator = properties.value(u"type"_s).toString() == u"separator"_s;
    entry.toggleType = properties.value(u"toggle-type"_s).toString();
    entry.toggleState = properties.value(u"toggle-state"_s, -1).toInt();
    return entry;
}

} // namespace

QString TrayProbe::withoutMnemonic(const QString& label)
{
    QString plain;
    plain.reserve(label.size());
    for (qsizetype i = 0; i < label.size(); ++i) {
        const QChar c = label.at(i);
        if ((c == u'_' || c == u'&') && i + 1 < label.size()) {
            // A doubled mark is the mark itself.
            if (label.at(i + 1) == c)
                ++i;
            else
                continue;
        }
        plain.append(label.at(i));
    }
    return plain;
}

const TrayProbe::MenuEntry* TrayProbe::find(const QList<MenuEntry>& entries, const QString& label)
{
    for (const MenuEntry& entry : entries) {
        if (entry.visible && !entry.separator && entry.label == label)
            return &entry;
        if (const MenuEntry* inside = find(entry.children, label))
            return inside;
    }
    return nullptr;
}

std::optional<QDBusMessage> TrayProbe::call(const QString& service, const QString& path,
    const QString& interface, const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    // Asynchronous, with the event loop running meanwhile: the callee may be a tray icon of this
    // very process (on a connection of its own). A blocking call with a nested event loop was
    // seen to hang there for good; this one gives up after its deadline.
    const QDBusPendingCall pending = QDBusConnection::sessionBus().asyncCall(message, callTimeoutMs);
    if (!QTest::qWaitFor([&] { return pending.isFinished(); }, callTimeoutMs + 5000)) {
        m_error = u"%1 %2.%3: no answer"_s.arg(service, interface, method);
        return std::nullopt;
    }
    const QDBusMessage reply = pending.reply();
    if (reply.type() != QDBusMessage::ReplyMessage) {
        m_error = u"%1 %2.%3: %4"_s.arg(service, interface, method, reply.errorMessage());
        return std::nullopt;
    }
    return reply;
}

std::optional<QVariant> TrayProbe::property(
    const QString& service, const QString& path, const QString& interface, const QString& name)
{
    const std::optional<QDBusMessage> reply
        = call(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, { interface, name });
    if (!reply || reply->arguments().isEmpty())
        return std::nullopt;
    return reply->arguments().constFirst().value<QDBusVariant>().variant();
}

QStringList TrayProbe::items()
{
    return property(watcherService, watcherPath, watcherService, u"RegisteredStatusNotifierItems"_s)
        .value_or(QVariant())
        .toStringList();
}

QString TrayProbe::waitForItem(qint64 pid, int timeoutMs)
{
    QString found;
    const bool arrived = QTest::qWaitFor(
        [&] {
            for (const QString& item : items()) {
                if (pid == 0 || itemPid(item) == pid) {
                    found = item;
                    return true;
                }
            }
            return false;
        },
        timeoutMs);
    if (!arrived)
        m_error
            = u"no tray item%1 registered within %2 ms"_s.arg(pid ? u" of process %1"_s.arg(pid) : QString())
                  .arg(timeoutMs);
    return found;
}

qint64 TrayProbe::itemPid(const QString& item)
{
    const std::optional<QDBusMessage> reply = call(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
        u"org.freedesktop.DBus"_s, u"GetConnectionUnixProcessID"_s, { splitItem(item).first });
    return reply && !reply->arguments().isEmpty() ? reply->arguments().constFirst().toLongLong() : 0;
}

QVariant TrayProbe::itemProperty(const QString& item, const QString& name)
{
    const auto [service, path] = splitItem(item);
    return property(service, path, itemInterface, name).value_or(QVariant());
}

bool TrayProbe::activate(const QString& item, QPoint position)
{
    const auto [service, path] = splitItem(item);
    return call(service, path, itemInterface, u"Activate"_s, { position.x(), position.y() }).has_value();
}

std::optional<QString> TrayProbe::menuPath(const QString& item, QString* service)
{
    const auto [itemService, path] = splitItem(item);
    const std::optional<QVariant> menu = property(itemService, path, itemInterface, u"Menu"_s);
    if (!menu)
        return std::nullopt;
    const QString menuPath = menu->value<QDBusObjectPath>().path();
    if (menuPath.isEmpty() || menuPath == u"/"_s) {
        m_error = u"the tray item %1 has no menu"_s.arg(item);
        return std::nullopt;
    }
    *service = itemService;
    return menuPath;
}

std::optional<QList<TrayProbe::MenuEntry>> TrayProbe::menu(const QString& item)
{
    QString service;
    const std::optional<QString> path = menuPath(item, &service);
    if (!path)
        return std::nullopt;
    // A panel announces the menu before it asks for it; programs may fill it in then.
    if (!call(service, *path, menuInterface, u"AboutToShow"_s, { 0 }))
        return std::nullopt;
    const std::optional<QDBusMessage> reply
        = call(service, *path, menuInterface, u"GetLayout"_s, { 0, -1, QStringList() });
    if (!reply)
        return std::nullopt;
    if (reply->arguments().size() != 2 || reply->signature() != u"u(ia{sv}av)"_s) {
        m_error = u"GetLayout of %1 answered %2"_s.arg(item, reply->signature());
        return std::nullopt;
    }
    return readEntry(reply->arguments().at(1).value<QDBusArgument>()).children;
}

bool TrayProbe::clickMenuEntry(const QString& item, const QString& label)
{
    const std::optional<QList<MenuEntry>> entries = menu(item);
    if (!entries)
        return false;
    const MenuEntry* entry = find(*entries, label);
    if (!entry) {
        m_error = u"the menu of %1 has no entry \"%2\""_s.arg(item, label);
        return false;
    }
    if (!entry->enabled) {
        m_error = u"the entry \"%1\" is disabled"_s.arg(label);
        return false;
    }
    QString service;
    const std::optional<QString> path = menuPath(item, &service);
    if (!path)
        return false;
    const uint timestamp = uint(QDateTime::currentSecsSinceEpoch());
    return call(service, *path, menuInterface, u"Event"_s,
        { entry->id, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), timestamp })
        .has_value();
}

std::optional<bool> TrayProbe::isHostRegistered()
{
    const std::optional<QVariant> value
        = property(watcherService, watcherPath, watcherService, u"IsStatusNotifierHostRegistered"_s);
    return value ? std::optional<bool>(value->toBool()) : std::nullopt;
}

bool TrayProbe::setHostRegistered(bool registered)
{
    return call(watcherService, u"/TrayControl"_s, u"org.vexet.test.TrayControl"_s, u"SetHostRegistered"_s,
        { registered })
        .has_value();
}
