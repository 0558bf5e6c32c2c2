#include "PortalScreenCast.h"

#include "PortalRequest.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

const QString castInterface = u"org.freedesktop.portal.ScreenCast"_s;
const QString sessionInterface = u"org.freedesktop.portal.Session"_s;

// cursor_mode values of the portal.
constexpr uint cursorHidden = 1;
constexpr uint cursorEmbedded = 2;
// persist_mode: remembered until the user revokes it.
constexpr uint persistUntilRevoked = 2;

QString token()
{
    return u"vexet"_s + QUuid::createUuid().toString(QUuid::Id128);
}

std::optional<QPoint> pointOf(const QVariant& value)
{
    if (!value.isValid())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    int x = 0;
    int y = 0;
    argument.beginStructure();
    argument >> x >> y;
    argument.endStructure();
    return QPoint(x, y);
}

// The first stream of Start's answer, a(ua{sv}): its node and what the desktop says of it.
bool readStream(const QVariant& streams, PortalScreenCast::Outcome& outcome)
{
    if (!streams.canConvert<QDBusArgument>())
        return false;
    const auto argument = streams.value<QDBusArgument>();
    bool found = false;
    argument.beginArray();
    while (!argument.atEnd()) {
        uint node = 0;
        QVariantMap properties;
        argument.beginStructure();
        argument >> node >> properties;
        argument.endStructure();
        if (found)
            continue;
        found = true;
        outcome.node = node;
        outcome.position = pointOf(properties.value(u"position"_s));
        if (const std::optional<QPoint> size = pointOf(properties.value(u"size"_s)))
            outcome.size = QSize(size->x(), size->y());
    }
    argument.endArray();
    return found;
}

} // namespace

PortalScreenCast::PortalScreenCast(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
}

PortalScreenCast::~PortalScreenCast()
{
    close();
}

PortalRequest* PortalScreenCast::newRequest()
{
    // The one before may be reporting right now.
    if (m_request)
        m_request->deleteLater();
    m_request = new PortalRequest(m_bus, this);
    return m_request;
}

void PortalScreenCast::open(const Options& options)
{
    m_options = options;
    PortalRequest* request = newRequest();
    connect(request, &PortalRequest::finished, this, [this](const PortalResponse& response) {
        m_session = PortalRequest::pathOf(response.results.value(u"session_handle"_s));
        if (response.code != PortalResponse::success || m_session.isEmpty()) {
            fail(response, u"oturum açılamadı"_s);
            return;
        }
        // The desktop ends a session with this signal; the path is the session's own.
        m_bus.connect(QString(), m_session, sessionInterface, u"Closed"_s, this, SLOT(sessionClosed()));
        selectSources();
    });
    request->call(castInterface, u"CreateSession"_s, {}, { { u"session_handle_token"_s, token() } });
}

void PortalScreenCast::selectSources()
{
    QVariantMap options { { u"types"_s, uint(m_options.type) }, { u"multiple"_s, false },
        { u"cursor_mode"_s, m_options.cursor ? cursorEmbedded : cursorHidden },
        { u"persist_mode"_s, persistUntilRevoked } };
    if (!m_options.restoreToken.isEmpty())
        options.insert(u"restore_token"_s, m_options.restoreToken);
    PortalRequest* request = newRequest();
    connect(request, &PortalRequest::finished, this, [this](const PortalResponse& response) {
        if (response.code != PortalResponse::success) {
            fail(response, u"kaynak seçilemedi"_s);
            return;
        }
        start();
    });
    request->call(
        castInterface, u"SelectSources"_s, { QVariant::fromValue(QDBusObjectPath(m_session)) }, options);
}

void PortalScreenCast::start()
{
    PortalRequest* request = newRequest();
    connect(request, &PortalRequest::finished, this, [this](const PortalResponse& response) {
        if (response.code != PortalResponse::success) {
            fail(response, u"paylaşım başlatılamadı"_s);
            return;
        }
        Outcome started;
        if (!readStream(response.results.value(u"streams"_s), started)) {
            fail({ PortalResponse::other, {}, u"Masaüstü paylaşılacak bir görüntü seçmedi."_s }, QString());
            return;
        }
        started.restoreToken = response.results.value(u"restore_token"_s).toString();
        openRemote(started);
    });
    request->call(castInterface, u"Start"_s,
        { QVariant::fromValue(QDBusObjectPath(m_session)), m_options.parentWindow }, {});
}

void PortalScreenCast::openRemote(Outcome started)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        PortalRequest::service, PortalRequest::path, castInterface, u"OpenPipeWireRemote"_s);
    message.setArguments({ QVariant::fromValue(QDBusObjectPath(m_session)), QVariantMap() });
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, started]() mutable {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
        if (reply.isError() || !reply.value().isValid()) {
            fail({ PortalResponse::other, {}, reply.error().message() }, u"PipeWire bağlantısı alınamadı"_s);
            return;
        }
        started.code = Outcome::Code::opened;
        started.remote = reply.value();
        m_open = true;
        finish(started);
    });
}

void PortalScreenCast::fail(const PortalResponse& response, const QString& step)
{
    Outcome outcome;
    if (response.code == PortalResponse::cancelled) {
        outcome.code = Outcome::Code::cancelled;
    } else {
        const QString why
            = response.error.isEmpty() ? u"Masaüstü ekran paylaşımını reddetti."_s : response.error;
        outcome.reason = step.isEmpty() ? why : u"Ekran paylaşımı: %1. %2"_s.arg(step, why);
    }
    close();
    finish(outcome);
}

void PortalScreenCast::finish(Outcome outcome)
{
    if (m_finished)
        return;
    m_finished = true;
    Q_EMIT opened(outcome);
}

void PortalScreenCast::sessionClosed()
{
    const bool wasOpen = m_open;
    m_open = false;
    m_bus.disconnect(QString(), m_session, sessionInterface, u"Closed"_s, this, SLOT(sessionClosed()));
    m_session.clear();
    if (!m_finished)
        finish({ Outcome::Code::failed, {}, 0, {}, {}, {}, u"Masaüstü ekran paylaşımını kapattı."_s });
    else if (wasOpen)
        Q_EMIT closed();
}

void PortalScreenCast::close()
{
    if (m_request) {
        m_request->disconnect(this);
        m_request->deleteLater();
    }
    m_request = nullptr;
    m_open = false;
    if (m_session.isEmpty())
        return;
    m_bus.disconnect(QString(), m_session, sessionInterface, u"Closed"_s, this, SLOT(sessionClosed()));
    m_bus.call(
        QDBusMessage::createMethodCall(PortalRequest::service, m_session, sessionInterface, u"Close"_s),
        QDBus::NoBlock);
    m_session.clear();
}
