#include "AtSpiClient.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace {

const QString connectionName = u"vexet-accessibility-test"_s;
const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
constexpr int timeoutMs = 10000;

// An AT-SPI object reference, "(so)".
AtSpiNode readNode(const QDBusArgument& argument)
{
    AtSpiNode node;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> node.service >> path;
    argument.endStructure();
    node.path = path.path();
    return node;
}

QDBusConnection accessibilityBus(QString& error)
{
    QDBusMessage ask = QDBusMessage::createMethodCall(
        u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s);
    const QDBusMessage answer = QDBusConnection::sessionBus().call(ask, QDBus::Block, timeoutMs);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) {
        error = u"no accessibility bus on the session bus: "_s + answer.errorMessage();
        return QDBusConnection(connectionName);
    }
    QDBusConnection bus
        = QDBusConnection::connectToBus(answer.arguments().constFirst().toString(), connectionName);
    if (!bus.isConnected())
        error = u"cannot connect to the accessibility bus: "_s + bus.lastError().message();
    return bus;
}

} // namespace

AtSpiClient::AtSpiClient()
    : m_bus(accessibilityBus(m_error))
{
}

AtSpiClient::~AtSpiClient()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

std::optional<AtSpiNode> AtSpiClient::application(qint64 pid) const
{
    const AtSpiNode registry { u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/accessible/root"_s };
    const QList<AtSpiNode> applications = children(registry);
    for (const AtSpiNode& application : applications) {
        const QDBusReply<uint> owner = m_bus.interface()->servicePid(application.service);
        if (owner.isValid() && owner.value() == static_cast<uint>(pid))
            return application;
    }
    return std::nullopt;
}

QList<AtSpiNode> AtSpiClient::children(const AtSpiNode& node) const
{
    const QDBusMessage answer = call(node, accessibleInterface, u"GetChildren"_s);
    QList<AtSpiNode> result;
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return result;
    const auto list = answer.arguments().constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd())
        result.append(readNode(list));
    list.endArray();
    return result;
}

QList<AtSpiNode> AtSpiClient::descendants(const AtSpiNode& node) const
{
    QList<AtSpiNode> result;
    const QList<AtSpiNode> direct = children(node);
    for (const AtSpiNode& child : direct) {
        result.append(child);
        result.append(descendants(child));
    }
    return result;
}

std::optional<AtSpiRole> AtSpiClient::role(const AtSpiNode& node) const
{
    const QDBusMessage answer = call(node, accessibleInterface, u"GetRole"_s);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return std::nullopt;
    return static_cast<AtSpiRole>(answer.arguments().constFirst().toUInt());
}

QString AtSpiClient::roleName(const AtSpiNode& node) const
{
    const QDBusMessage answer = call(node, accessibleInterface, u"GetRoleName"_s);
    return answer.arguments().isEmpty() ? QString() : answer.arguments().constFirst().toString();
}

QString AtSpiClient::name(const AtSpiNode& node) const
{
    return property(node, u"Name"_s).toString();
}

bool AtSpiClient::isShowing(const AtSpiNode& node) const
{
    constexpr int showing = 25; // ATSPI_STATE_SHOWING
    const QDBusMessage answer = call(node, accessibleInterface, u"GetState"_s);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return false;
    // "au": the states as bits, 32 to an element.
    QList<uint> words;
    answer.arguments().constFirst().value<QDBusArgument>() >> words;
    return !words.isEmpty() && (words.constFirst() & (1u << showing)) != 0;
}

QString AtSpiClient::description(const AtSpiNode& node) const
{
    return property(node, u"Description"_s).toString();
}

QRect AtSpiClient::extents(const AtSpiNode& node) const
{
    constexpr uint screenCoordinates = 0;
    const QDBusMessage answer = call(
        node, u"org.a11y.atspi.Component"_s, u"GetExtents"_s, { QVariant::fromValue(screenCoordinates) });
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return {};
    const auto box = answer.arguments().constFirst().value<QDBusArgument>();
    int x = 0, y = 0, width = 0, height = 0;
    box.beginStructure();
    box >> x >> y >> width >> height;
    box.endStructure();
    return QRect(x, y, width, height);
}

bool AtSpiClient::doAction(const AtSpiNode& node, const QString& actionName) const
{
    const QString actionInterface = u"org.a11y.atspi.Action"_s;
    const QDBusMessage actions = call(node, actionInterface, u"GetActions"_s);
    if (actions.type() != QDBusMessage::ReplyMessage || actions.arguments().isEmpty())
        return false;
    // a(sss): name, description, key binding.
    const auto list = actions.arguments().constFirst().value<QDBusArgument>();
    int found = -1;
    list.beginArray();
    for (int index = 0; !list.atEnd(); ++index) {
        QString actionNameHere, description, keyBinding;
        list.beginStructure();
        list >> actionNameHere >> description >> keyBinding;
        list.endStructure();
        if (found < 0 && actionNameHere == actionName)
            found = index;
    }
    list.endArray();
    if (found < 0)
        return false;
    const QDBusMessage done = call(node, actionInterface, u"DoAction"_s, { found });
    return done.type() == QDBusMessage::ReplyMessage && !done.arguments().isEmpty()
        && done.arguments().constFirst().toBool();
}

QVariant AtSpiClient::property(const AtSpiNode& node, const QString& name) const
{
    const QDBusMessage answer
        = call(node, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, { accessibleInterface, name });
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return {};
    return answer.arguments().constFirst().value<QDBusVariant>().variant();
}

QDBusMessage AtSpiClient::call(const AtSpiNode& node, const QString& interface, const QString& method,
    const QVariantList& arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(node.service, node.path, interface, method);
    message.setArguments(arguments);
    return m_bus.call(message, QDBus::Block, timeoutMs);
}
