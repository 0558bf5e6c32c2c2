#include "ShortcutsPortalControl.h"

#include <QDBusMessage>
#include <QJsonDocument>
#include <QJsonParseError>

using namespace Qt::StringLiterals;

ShortcutsPortalControl::ShortcutsPortalControl(const QDBusConnection& bus)
    : m_bus(bus)
{
}

std::optional<QVariant> ShortcutsPortalControl::call(const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(u"org.freedesktop.impl.portal.desktop.vexettest"_s,
        u"/ShortcutsControl"_s, u"org.vexet.test.ShortcutsControl"_s, method);
    message.setArguments(arguments);
    const QDBusMessage reply = m_bus.call(message, QDBus::Block, 20000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1) {
        m_error = u"%1: %2"_s.arg(method, reply.errorMessage());
        return std::nullopt;
    }
    return reply.arguments().constFirst();
}

bool ShortcutsPortalControl::activate(const QString& id)
{
    const std::optional<QVariant> answer = call(u"Activate"_s, { id });
    if (answer && !answer->toBool())
        m_error = u"no open session bound \"%1\""_s.arg(id);
    return answer && answer->toBool();
}

bool ShortcutsPortalControl::setTrigger(const QString& id, const QString& triggerDescription)
{
    const std::optional<QVariant> answer = call(u"SetTrigger"_s, { id, triggerDescription });
    if (answer && !answer->toBool())
        m_error = u"no open session bound \"%1\""_s.arg(id);
    return answer && answer->toBool();
}

std::optional<QJsonObject> ShortcutsPortalControl::received()
{
    const std::optional<QVariant> answer = call(u"Received"_s, {});
    if (!answer)
        return std::nullopt;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(answer->toString().toUtf8(), &error);
    if (!document.isObject()) {
        m_error = u"Received: not a JSON object: %1"_s.arg(error.errorString());
        return std::nullopt;
    }
    return document.object();
}
