#include "PortalRequest.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

const QString requestInterface = u"org.freedesktop.portal.Request"_s;

// The unique name of the connection as it appears in request paths: ":1.42" becomes "1_42".
QString senderPart(const QDBusConnection& bus)
{
    QString name = bus.baseService();
    if (name.startsWith(u':'))
        name.remove(0, 1);
    return name.replace(u'.', u'_');
}

} // namespace

PortalRequest::PortalRequest(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
}

PortalRequest::~PortalRequest()
{
    if (!m_finished && !m_requestPath.isEmpty()) {
        // Nobody waits for the answer any more: let the portal close its dialog, if it shows one.
        m_bus.call(QDBusMessage::createMethodCall(service, m_requestPath, requestInterface, u"Close"_s),
            QDBus::NoBlock);
    }
    unsubscribe();
}

void PortalRequest::call(
    const QString& interface, const QString& method, const QVariantList& arguments, QVariantMap options)
{
    if (!m_bus.isConnected()) {
        finish({ PortalResponse::other, {}, u"Oturum veri yoluna (D-Bus) bağlanılamadı."_s });
        return;
    }
    const QString token = u"vexet"_s + QUuid::createUuid().toString(QUuid::Id128);
    options.insert(u"handle_token"_s, token);
    subscribe(path + u"/request/"_s + senderPart(m_bus) + u'/' + token);

    // A portal that goes away while the request runs will never answer.
    m_portalWatcher
        = new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(m_portalWatcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        finish({ PortalResponse::other, {}, u"Masaüstü kapısı (xdg-desktop-portal) kapandı."_s });
    });

    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(QVariantList(arguments) << options);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &PortalRequest::callReturned);
}

QString PortalRequest::pathOf(const QVariant& value)
{
    return value.metaType() == QMetaType::fromType<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path()
                                                                      : value.toString();
}

void PortalRequest::callReturned(QDBusPendingCallWatcher* watcher)
{
    watcher->deleteLater();
    const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
    if (reply.isError()) {
        const QDBusError error = reply.error();
        const QString reason = error.type() == QDBusError::ServiceUnknown
            ? u"Bu masaüstünde xdg-desktop-portal çalışmıyor."_s
            : error.message();
        finish({ PortalResponse::other, {}, reason });
        return;
    }
    // Portals older than the handle token choose the path themselves.
    const QString answered = reply.value().path();
    if (!m_finished && answered != m_requestPath)
        subscribe(answered);
}

void PortalRequest::subscribe(const QString& requestPath)
{
    unsubscribe();
    m_requestPath = requestPath;
    // Matched by the path alone, which is this request's own: a match on the portal's well-known
    // name would drop an answer that comes before Qt has learned the name's owner.
    m_subscribed = m_bus.connect(QString(), m_requestPath, requestInterface, u"Response"_s, this,
        SLOT(handleResponse(uint, QVariantMap)));
}

void PortalRequest::unsubscribe()
{
    if (!m_subscribed)
        return;
    m_bus.disconnect(QString(), m_requestPath, requestInterface, u"Response"_s, this,
        SLOT(handleResponse(uint, QVariantMap)));
    m_subscribed = false;
}

void PortalRequest::handleResponse(uint response, const QVariantMap& results)
{
    finish({ response, results, {} });
}

void PortalRequest::finish(PortalResponse response)
{
    if (m_finished)
        return;
    m_finished = true;
    unsubscribe();
    if (m_portalWatcher)
        m_portalWatcher->disconnect(this);
    Q_EMIT finished(response);
}
