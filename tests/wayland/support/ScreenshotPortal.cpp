#include "ScreenshotPortal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QFile>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;
// A request's path is made of the caller's bus name and its token: every request of the process
// gets a token of its own, since the portal refuses a path that is still taken.
int requestCount = 0;

} // namespace

void ScreenshotPortal::response(uint code, const QVariantMap& results)
{
    m_answer = Answer { code, results };
}

std::optional<ScreenshotPortal::Answer> ScreenshotPortal::screenshot(bool interactive, int timeoutMs)
{
    // The Request's path follows from our bus name and the token: listen there before asking,
    // so that a quick answer is not missed.
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString token = u"vexet_test_%1"_s.arg(++requestCount);
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    const QString requestPath = u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(sender, token);
    m_answer.reset();
    const char* slot = SLOT(response(uint, QVariantMap));
    if (!bus.connect(portalService, requestPath, requestInterface, u"Response"_s, this, slot)) {
        m_error = u"cannot listen to %1: %2"_s.arg(requestPath, bus.lastError().message());
        return std::nullopt;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(portalService, u"/org/freedesktop/portal/desktop"_s,
        u"org.freedesktop.portal.Screenshot"_s, u"Screenshot"_s);
    call << QString() << QVariantMap { { u"handle_token"_s, token }, { u"interactive"_s, interactive } };
    const QDBusPendingCall pending = bus.asyncCall(call, timeoutMs);
    bool answered = false;
    const bool returned = QTest::qWaitFor([&] { return pending.isFinished(); }, timeoutMs + 5000);
    const QDBusMessage reply = pending.reply();
    if (!returned) {
        m_error = u"Screenshot: no answer"_s;
    } else if (reply.type() != QDBusMessage::ReplyMessage) {
        m_error = u"Screenshot: %1"_s.arg(reply.errorMessage());
    } else if (const QString path = reply.arguments().value(0).value<QDBusObjectPath>().path();
               path != requestPath) {
        m_error = u"Screenshot made the request %1 instead of %2"_s.arg(path, requestPath);
    } else {
        answered = QTest::qWaitFor([this] { return m_answer.has_value(); }, timeoutMs);
        if (!answered)
            m_error = u"the portal did not answer within %1 ms"_s.arg(timeoutMs);
    }
    bus.disconnect(portalService, requestPath, requestInterface, u"Response"_s, this, slot);
    return answered ? m_answer : std::nullopt;
}

QImage ScreenshotPortal::takePicture(const Answer& answer)
{
    const QUrl uri(answer.uri());
    if (!uri.isLocalFile())
        return {};
    QImage picture(uri.toLocalFile());
    QFile::remove(uri.toLocalFile());
    return picture;
}
